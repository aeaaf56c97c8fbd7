// Memory at kernel virtual addresses of the host: krb to kwq and krbs to kwqs.

#include "tovira_parse/handlers.h"
#include "tovira_parse/memory/memory_engine.h"
#include "vek.h"

namespace
{

constexpr MemoryFamily kKernelMemory = {
    .letter = 'K',
    .widths = "BWLQ",
    .bytes = {vekKmemReadByte, vekKmemWriteByte},
    .words = {vekKmemReadWord, vekKmemWriteWord},
    .longs = {vekKmemReadLong, vekKmemWriteLong},
    .quads = {vekKmemReadQuad, vekKmemWriteQuad},
    .itemPrefix = "",
    // Kernel addresses fill all 64 bits.
    .itemDigits = 16,
    .runDigits = 16,
    // As in video memory, the other family of plain memory.
    .anyRepeatFlagContinues = false,
    // Structures are walked through: a read goes on behind whatever was touched last.
    .itemWriteMoves = true,
    .runWriteMoves = true,
    // The host's memory is not the card's: it is shown and never saved.
    .runFile = RunFile::kNone,
    .runCasing = UpperCasing::kWholeText,
};

}  // namespace

int doKmem(char* cmdText, int repeat)
{
    static std::uint64_t oldKvaddr = 0;
    return runItemCommand(kKernelMemory, cmdText, repeat, oldKvaddr);
}

int doMultKmem(char* cmdText, int repeat)
{
    static std::uint64_t oldKvaddr = 0;
    return runRunCommand(kKernelMemory, cmdText, repeat, oldKvaddr);
}
