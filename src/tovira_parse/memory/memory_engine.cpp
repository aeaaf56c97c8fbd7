#include "tovira_parse/memory/memory_engine.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>

#include "tovira_parse/files.h"
#include "tovira_parse/hex_digits.h"
#include "tovira_parse/hex_dump.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/output.h"
#include "tovira_parse/progress.h"
#include "util_cmd.h"

namespace
{

constexpr std::size_t kBytesPerLine = 16;
constexpr std::size_t kLongestLabel = 32;
constexpr std::size_t kLongestItem = sizeof " 89abcdef 01234567";

template <typename Item>
const ItemAccess<Item>& accessOf(const MemoryFamily& family)
{
    if constexpr (std::is_same_v<Item, std::uint8_t>) {
        return family.bytes;
    } else if constexpr (std::is_same_v<Item, std::uint16_t>) {
        return family.words;
    } else if constexpr (std::is_same_v<Item, std::uint32_t>) {
        return family.longs;
    } else {
        return family.quads;
    }
}

// Calls the function with a value of the item type of that size.
template <typename Function>
int withItemType(std::size_t itemSize, Function function)
{
    switch (itemSize) {
        case sizeof(std::uint8_t):
            return function(std::uint8_t{});
        case sizeof(std::uint16_t):
            return function(std::uint16_t{});
        case sizeof(std::uint32_t):
            return function(std::uint32_t{});
        default:
            return function(std::uint64_t{});
    }
}

template <typename Item>
char* putItem(char* out, Item item)
{
    if constexpr (sizeof(Item) == sizeof(std::uint64_t)) {
        // The low half stands first, as the two 32-bit registers of a quad lie in the register region.
        out = putFixedHex(out, item & 0xffffffffU, 4);
        *out++ = ' ';
        return putFixedHex(out, item >> 32U, 4);
    } else {
        return putFixedHex(out, item, sizeof(Item));
    }
}

template <typename Item>
void printItem(const MemoryFamily& family, std::uint64_t address, Item item)
{
    std::array<char, kLongestLabel + kLongestItem> line;
    char* out = stpcpy(line.data(), family.itemPrefix);
    out = putHex(out, address, family.itemDigits);
    *out++ = ':';
    *out++ = ' ';
    out = putItem(out, item);
    *out++ = '\n';
    printText(line.data(), out);
}

template <typename Item>
int readItem(const MemoryFamily& family, Tokens& arguments, int repeat, std::uint64_t& last)
{
    const char* const typed = arguments.argument();
    std::uint64_t address = typed == nullptr ? 0 : static_cast<std::uint64_t>(htoi(typed));
    if (family.anyRepeatFlagContinues ? repeat != 0 : repeat == 1) {
        address = last + sizeof(Item);
    }
    Item item = 0;
    accessOf<Item>(family).read(address, &item);
    printItem(family, address, item);
    last = address;
    return kStatusDone;
}

template <typename Item>
int writeItem(const MemoryFamily& family, Tokens& arguments, std::uint64_t& last)
{
    const char* const typedAddress = arguments.argument();
    const char* const typedData = arguments.argument();
    if (typedData == nullptr) {
        return kStatusBadArgument;
    }
    const auto address = static_cast<std::uint64_t>(htoi(typedAddress));
    accessOf<Item>(family).write(address, static_cast<Item>(htoi(typedData)));
    if (family.itemWriteMoves) {
        last = address;
    }
    return kStatusDone;
}

// One line of a run: its label, and its items behind it. Every line but the first ends the one before it. Returns the
// column of the screen that this leaves off at.
template <typename Item>
int printLine(const MemoryFamily& family, std::uint64_t address, const Item* items, std::size_t count, bool isFirst)
{
    if constexpr (sizeof(Item) == 1) {
        printByte(address, items, static_cast<int>(count));
        return 0;
    } else {
        std::array<char, kLongestLabel + kLongestItem*(kBytesPerLine / sizeof(Item))> line;
        char* out = line.data();
        if (!isFirst) {
            *out++ = '\n';
        }
        out = putHex(out, address, family.runDigits);
        *out++ = ':';
        for (std::size_t i = 0; i < count; ++i) {
            *out++ = ' ';
            out = putItem(out, items[i]);
        }
        printText(line.data(), out);
        return static_cast<int>(out - line.data()) - (isFirst ? 0 : 1);
    }
}

// The byte that a run saves of each item while it reads. Only byte reads have a cell of that size to save; the runs of
// wider items write as many bytes, and their files hold none of the values.
template <typename Item>
void saveByteCell(FILE* file, Item item)
{
    putc_unlocked(sizeof(Item) == 1 ? static_cast<unsigned char>(item) : 0, file);
}

struct RunSinks {
    FILE* byteCells = nullptr;  // gets one byte an item, when there is one
    void* values = nullptr;     // gets every item, when there is one; large enough for the run
};

// Reads and shows a run, line by line, and closes it with a line end.
template <typename Item>
void readAndShowRun(const MemoryFamily& family, const Run& run, const RunSinks& sinks)
{
    constexpr std::size_t kItemsPerLine = kBytesPerLine / sizeof(Item);
    const ItemAccess<Item>& access = accessOf<Item>(family);
    auto* const values = static_cast<Item*>(sinks.values);
    const std::size_t count = run.count < 1 ? 0 : static_cast<std::size_t>(run.count);
    Progress progress = beginProgress("reading", count * sizeof(Item));
    for (std::size_t first = 0; first < count; first += kItemsPerLine) {
        const std::size_t inLine = std::min(kItemsPerLine, count - first);
        const std::uint64_t address = run.start + first * sizeof(Item);
        std::array<Item, kItemsPerLine> items{};
        for (std::size_t i = 0; i < inLine; ++i) {
            access.read(address + i * sizeof(Item), &items[i]);
            if (sinks.byteCells != nullptr) {
                saveByteCell(sinks.byteCells, items[i]);
            }
        }
        if (values != nullptr) {
            std::copy_n(items.begin(), inLine, values + first);
        }
        if (progress.sharesOutput) {
            hideProgress();
        }
        const int column = printLine(family, address, items.data(), inLine, first == 0);
        stepProgress(progress, (first + inLine) * sizeof(Item), column);
    }
    hideProgress();
    putchar('\n');
}

template <typename Item>
int readRunIntoBuffer(const MemoryFamily& family, Tokens& arguments, const Run& run, std::uint64_t& next)
{
    if (!fitsBuffer(run, sizeof(Item))) {
        putchar('\n');
        next = run.start;
        return kStatusDone;
    }
    const HeapPointer<void> values = allocateRun(run, sizeof(Item));
    if (values == nullptr) {
        return kStatusDone;
    }
    readAndShowRun<Item>(family, run, {.byteCells = nullptr, .values = values.get()});
    saveFile(arguments.argument(), values.get(), static_cast<std::size_t>(run.count) * sizeof(Item));
    next = endOf(run, sizeof(Item));
    return kStatusDone;
}

template <typename Item>
int readRunIntoOpenedFile(const MemoryFamily& family, Tokens& arguments, const Run& run, std::uint64_t& next)
{
    const char* const name = arguments.argument();
    FILE* const file = name == nullptr ? nullptr : createFile(name);
    if (name != nullptr && file == nullptr) {
        printf("Open %s error\n", name);
        return kStatusBadCommand;
    }
    readAndShowRun<Item>(family, run, {.byteCells = file, .values = nullptr});
    if (file != nullptr) {
        closeCreatedFile(file, name);
    }
    next = endOf(run, sizeof(Item));
    return kStatusDone;
}

template <typename Item>
int readRun(const MemoryFamily& family, Tokens& arguments, int repeat, std::uint64_t& next)
{
    const Run run = takeRun(arguments, repeat, next);
    switch (family.runFile) {
        case RunFile::kOpenedBefore:
            return readRunIntoOpenedFile<Item>(family, arguments, run, next);
        case RunFile::kWrittenAfter:
            return readRunIntoBuffer<Item>(family, arguments, run, next);
        case RunFile::kNone:
            break;
    }
    readAndShowRun<Item>(family, run, {});
    next = endOf(run, sizeof(Item));
    return kStatusDone;
}

template <typename Item>
int writeRun(const MemoryFamily& family, Tokens& arguments, std::uint64_t& next)
{
    const char* const typedAddress = arguments.argument();
    const char* const typedCount = arguments.argument();
    const char* const typedValue = arguments.argument();
    if (typedValue == nullptr) {
        return kStatusBadArgument;
    }
    const Run run{static_cast<std::uint64_t>(htoi(typedAddress)), htoi32(typedCount)};
    const auto value = static_cast<Item>(htoi(typedValue));
    const ItemAccess<Item>& access = accessOf<Item>(family);
    const std::uint64_t end = endOf(run, sizeof(Item));
    for (std::uint64_t address = run.start; address != end; address += sizeof(Item)) {
        access.write(address, value);
    }
    if (family.runWriteMoves) {
        next = end;
    }
    return kStatusDone;
}

std::size_t itemSizeOf(char width)
{
    switch (width) {
        case 'B':
            return sizeof(std::uint8_t);
        case 'W':
            return sizeof(std::uint16_t);
        case 'L':
            return sizeof(std::uint32_t);
        default:
            return sizeof(std::uint64_t);
    }
}

// A family's words are its letter, 'R' or 'W', the letter of a width, and 'S' for a run.
bool isWordOf(const MemoryFamily& family, const char* word)
{
    const std::size_t length = strlen(word);
    return (length == 3 || (length == 4 && word[3] == 'S')) && word[0] == family.letter &&
           (word[1] == 'R' || word[1] == 'W') && strchr(family.widths, word[2]) != nullptr;
}

}  // namespace

MemoryCommand parseMemoryCommand(const MemoryFamily& family, char* cmdText, UpperCasing casing)
{
    if (casing == UpperCasing::kWholeText) {
        upperCase(cmdText);
    }
    Tokens tokens{cmdText};
    char* const word = tokens.word();
    if (word == nullptr) {
        return {tokens, 0, 0, false};
    }
    upperCase(word);
    if (!isWordOf(family, word)) {
        return {tokens, 0, 0, false};
    }
    return {tokens, word[1], itemSizeOf(word[2]), word[3] == 'S'};
}

int accessItem(const MemoryFamily& family, MemoryCommand& command, int repeat, std::uint64_t& last)
{
    return withItemType(command.itemSize, [&]<typename Item>(Item) {
        return command.operation == 'R' ? readItem<Item>(family, command.arguments, repeat, last)
                                        : writeItem<Item>(family, command.arguments, last);
    });
}

int accessRun(const MemoryFamily& family, MemoryCommand& command, int repeat, std::uint64_t& next)
{
    return withItemType(command.itemSize, [&]<typename Item>(Item) {
        return command.operation == 'R' ? readRun<Item>(family, command.arguments, repeat, next)
                                        : writeRun<Item>(family, command.arguments, next);
    });
}

int runItemCommand(const MemoryFamily& family, char* cmdText, int repeat, std::uint64_t& last)
{
    MemoryCommand command = parseMemoryCommand(family, cmdText, UpperCasing::kWholeText);
    if (command.operation == 0 || command.isRun) {
        return kStatusBadArgument;
    }
    return accessItem(family, command, repeat, last);
}

int runRunCommand(const MemoryFamily& family, char* cmdText, int repeat, std::uint64_t& next)
{
    MemoryCommand command = parseMemoryCommand(family, cmdText, family.runCasing);
    if (command.operation == 0 || !command.isRun) {
        return kStatusBadArgument;
    }
    return accessRun(family, command, repeat, next);
}

Run takeRun(Tokens& arguments, int repeat, std::uint64_t next)
{
    const char* const typedAddress = arguments.argument();
    const char* const typedCount = typedAddress == nullptr ? nullptr : arguments.argument();
    Run run{0, 1};
    if (typedAddress != nullptr) {
        run.start = static_cast<std::uint64_t>(htoi(typedAddress));
    }
    if (typedCount != nullptr) {
        run.count = htoi32(typedCount);
    }
    if (repeat == 1) {
        run.start = next;
    }
    return run;
}

std::uint64_t endOf(const Run& run, std::size_t itemSize)
{
    return run.count < 1 ? run.start : run.start + static_cast<std::uint64_t>(run.count) * itemSize;
}

bool fitsBuffer(const Run& run, std::size_t itemSize)
{
    return run.count >= 0 && static_cast<std::size_t>(run.count) * itemSize <= std::numeric_limits<std::int32_t>::max();
}

HeapPointer<void> allocateRun(const Run& run, std::size_t itemSize)
{
    // Never a size of 0, for which the answer might be null without being a failure.
    HeapPointer<void> buffer(calloc(static_cast<std::size_t>(run.count) + 1, itemSize));
    if (buffer == nullptr) {
        fputs("Out of memory\n", stderr);
    }
    return buffer;
}
