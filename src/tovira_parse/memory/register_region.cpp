// The register region: rrb to rwq and rrbs to rwqs.

#include "tovira_parse/handlers.h"
#include "tovira_parse/memory/memory_engine.h"
#include "vek.h"

namespace
{

constexpr MemoryFamily kRegisterRegion = {
    .letter = 'R',
    .widths = "BWLQ",
    .bytes = {vekRegReadByte, vekRegWriteByte},
    .words = {vekRegReadWord, vekRegWriteWord},
    .longs = {vekRegReadLong, vekRegWriteLong},
    .quads = {vekRegReadQuad, vekRegWriteQuad},
    .itemPrefix = "",
    .itemDigits = 8,
    .runDigits = 8,
    .anyRepeatFlagContinues = true,
    // Registers are written and read in turn: a repeated read goes on behind what was touched last.
    .itemWriteMoves = true,
    // A run of writes is repeated as it was typed, so that the next dump still goes on behind the last dump.
    .runWriteMoves = false,
    // A dump of registers is not to be repeated for want of a file, since reading may change them.
    .runFile = RunFile::kOpenedBefore,
    .runCasing = UpperCasing::kWholeText,
};

}  // namespace

int doReg(char* cmdText, int repeat)
{
    static std::uint64_t oldOffset = 0;
    return runItemCommand(kRegisterRegion, cmdText, repeat, oldOffset);
}

int doMultReg(char* cmdText, int repeat)
{
    static std::uint64_t oldOffset = 0;
    return runRunCommand(kRegisterRegion, cmdText, repeat, oldOffset);
}
