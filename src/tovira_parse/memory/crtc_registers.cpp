// The register file of display controller 0, reached by an index: crb, cwb and crbs.

#include "tovira_parse/handlers.h"
#include "tovira_parse/memory/memory_engine.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

// The library takes the low 32 bits of an index; what is shown and remembered is all of it.
int readCrtcRegister(std::uint64_t index, std::uint8_t* value)
{
    return vekCrtcReadByte(static_cast<std::uint32_t>(index), value);
}

int writeCrtcRegister(std::uint64_t index, std::uint8_t value)
{
    return vekCrtcWriteByte(static_cast<std::uint32_t>(index), value);
}

constexpr MemoryFamily kCrtcRegisters = {
    .letter = 'C',
    // The register file is bytes wide and known by the index of each.
    .widths = "B",
    .bytes = {readCrtcRegister, writeCrtcRegister},
    .words = {},
    .longs = {},
    .quads = {},
    .itemPrefix = "CRTC0 ",
    .itemDigits = 2,
    .runDigits = 8,
    // Registers, walked through as those of the register region are.
    .anyRepeatFlagContinues = true,
    .itemWriteMoves = true,
    // There is no run of writes.
    .runWriteMoves = false,
    .runFile = RunFile::kOpenedBefore,
    .runCasing = UpperCasing::kWholeText,
};

}  // namespace

int doCrtcReg(char* cmdText, int repeat)
{
    // One index for all three commands, since they walk through the same small file.
    static std::uint64_t oldOffset = 0;
    MemoryCommand command = parseMemoryCommand(kCrtcRegisters, cmdText, UpperCasing::kWholeText);
    if (command.operation == 0 || (command.isRun && command.operation == 'W')) {
        return kStatusBadArgument;
    }
    return command.isRun ? accessRun(kCrtcRegisters, command, repeat, oldOffset)
                         : accessItem(kCrtcRegisters, command, repeat, oldOffset);
}
