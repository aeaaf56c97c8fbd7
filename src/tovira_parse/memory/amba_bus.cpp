// The card's internal AMBA bus: arb to awq and arbs to awqs.

#include "tovira_parse/handlers.h"
#include "tovira_parse/memory/memory_engine.h"
#include "vek.h"

namespace
{

constexpr MemoryFamily kAmbaBus = {
    .letter = 'A',
    .widths = "BWLQ",
    .bytes = {vekAmbaReadByte, vekAmbaWriteByte},
    .words = {vekAmbaReadWord, vekAmbaWriteWord},
    .longs = {vekAmbaReadLong, vekAmbaWriteLong},
    .quads = {vekAmbaReadQuad, vekAmbaWriteQuad},
    .itemPrefix = "",
    .itemDigits = 8,
    .runDigits = 8,
    // The registers seen from the other side: single accesses go on as those of the register region do.
    .anyRepeatFlagContinues = true,
    .itemWriteMoves = true,
    // Runs are those of a memory: a read goes on behind a fill, and a file holds the values shown.
    .runWriteMoves = true,
    .runFile = RunFile::kWrittenAfter,
    // File names keep the case in which they were typed, alone among the memory families: the word is split off first.
    .runCasing = UpperCasing::kWordOnly,
};

}  // namespace

int doAmba(char* cmdText, int repeat)
{
    static std::uint64_t oldOffset = 0;
    return runItemCommand(kAmbaBus, cmdText, repeat, oldOffset);
}

int doMultAmba(char* cmdText, int repeat)
{
    static std::uint64_t oldOffset = 0;
    return runRunCommand(kAmbaBus, cmdText, repeat, oldOffset);
}
