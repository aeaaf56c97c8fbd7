// Video memory: vrb to vwq and vrbs to vwqs. The runs of longs, vrls and vwls, are handed to the library as a whole.

#include <cstdio>

#include "tovira_parse/handlers.h"
#include "tovira_parse/memory/memory_engine.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/progress.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr MemoryFamily kVideoMemory = {
    .letter = 'V',
    .widths = "BWLQ",
    .bytes = {vekVramReadByte, vekVramWriteByte},
    .words = {vekVramReadWord, vekVramWriteWord},
    .longs = {vekVramReadLong, vekVramWriteLong},
    .quads = {vekVramReadQuad, vekVramWriteQuad},
    .itemPrefix = "",
    .itemDigits = 8,
    .runDigits = 8,
    // An address that is typed is always parsed here; only a true repeat sets it aside.
    .anyRepeatFlagContinues = false,
    // Single reads walk through a picture whatever is poked into it meanwhile.
    .itemWriteMoves = false,
    // A fill is most often looked at or continued behind its end.
    .runWriteMoves = true,
    // Memory may be read again: the dump comes first, and a file that cannot be created does not spoil it.
    .runFile = RunFile::kWrittenAfter,
    .runCasing = UpperCasing::kWholeText,
};

// Bytes in a run of longs.
std::uint64_t sizeOf(const Run& run)
{
    return endOf(run, sizeof(std::uint32_t)) - run.start;
}

void printLongs(const void* values, const Run& run)
{
    if (outputSharesProgressTerminal()) {
        dump_vram(values, sizeof(std::uint32_t), run.start, run.count);
        return;
    }
    const ElapsedTime elapsed("printing", sizeOf(run));
    dump_vram(values, sizeof(std::uint32_t), run.start, run.count);
}

// False when there is no memory to read the run into.
bool showLongs(const Run& run)
{
    const HeapPointer<void> buffer = allocateRun(run, sizeof(std::uint32_t));
    if (buffer == nullptr) {
        return false;
    }
    {
        const ElapsedTime elapsed("reading", sizeOf(run));
        vekMultiVramReadLong(static_cast<std::uint32_t*>(buffer.get()), run.start, run.count, nullptr);
    }
    printLongs(buffer.get(), run);
    putchar('\n');
    return true;
}

// Unlike every other run of reads it remembers where it began: a repeat shows the same block again, to watch it change.
int readLongs(Tokens& arguments, int repeat, std::uint64_t& start)
{
    const Run run = takeRun(arguments, repeat, start);
    const char* const fileName = arguments.argument();
    if (fileName != nullptr) {
        const ElapsedTime elapsed("reading", sizeOf(run));
        vekMultiVramReadLong(nullptr, run.start, run.count, fileName);
    } else if (run.count < 1 || !fitsBuffer(run, sizeof(std::uint32_t))) {
        putchar('\n');
    } else if (!showLongs(run)) {
        return kStatusDone;
    }
    start = run.start;
    return kStatusDone;
}

int fillLongs(Tokens& arguments, std::uint64_t& start)
{
    const char* const typedAddress = arguments.argument();
    const char* const typedCount = arguments.argument();
    const char* const value = arguments.argument();
    if (value == nullptr) {
        return kStatusBadArgument;
    }
    const auto address = static_cast<std::uint64_t>(htoi(typedAddress));
    const std::int32_t count = htoi32(typedCount);
    if (string_is_number(value) == 1) {
        vekMultVramWriteLong(static_cast<std::uint32_t>(htoi(value)), address, count, nullptr);
    } else {
        vekMultVramWriteLong(0, address, count, value);
    }
    start = address;
    return kStatusDone;
}

}  // namespace

int doVram(char* cmdText, int repeat)
{
    static std::uint64_t oldOffset = 0;
    return runItemCommand(kVideoMemory, cmdText, repeat, oldOffset);
}

int doMultVram(char* cmdText, int repeat)
{
    static std::uint64_t oldOffset = 0;
    MemoryCommand command = parseMemoryCommand(kVideoMemory, cmdText, kVideoMemory.runCasing);
    if (command.operation == 0 || !command.isRun) {
        return kStatusBadArgument;
    }
    if (command.itemSize != sizeof(std::uint32_t)) {
        return accessRun(kVideoMemory, command, repeat, oldOffset);
    }
    return command.operation == 'R' ? readLongs(command.arguments, repeat, oldOffset)
                                    : fillLongs(command.arguments, oldOffset);
}
