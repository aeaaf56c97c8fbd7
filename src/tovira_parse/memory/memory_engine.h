/// The engine behind the commands that read and write the card's memories: one item or a run of items of 1, 2, 4 or 8
/// bytes, to the screen and into files. A family of commands is a MemoryFamily, and what sets the families apart in it
/// stands in their descriptions, side by side.
#ifndef TOVIRA_PARSE_MEMORY_MEMORY_ENGINE_H
#define TOVIRA_PARSE_MEMORY_MEMORY_ENGINE_H

#include <cstddef>
#include <cstdint>

#include "tovira_parse/heap.h"
#include "tovira_parse/text.h"

/// The library's read and write of one item of a width. Their results are not looked at: a failed read shows what the
/// cleared result cell holds.
template <typename Item>
struct ItemAccess {
    int (*read)(std::uint64_t address, Item* value);
    int (*write)(std::uint64_t address, Item value);
};

/// What a run of reads does with a file name behind its count.
enum class RunFile {
    kNone,          ///< takes no file name
    kOpenedBefore,  ///< the file is created before anything is read, or the command fails; one byte an item
    kWrittenAfter,  ///< the values read are written once they have been shown; a file that fails is passed over
};

/// How much of the text of a command is turned into upper case, file names included.
enum class UpperCasing { kWholeText, kWordOnly };

/// A family of memory commands.
struct MemoryFamily {
    char letter;                     ///< the first letter of its command words, in upper case
    const char* widths;              ///< the letters of the item sizes that it knows, out of "BWLQ"
    ItemAccess<std::uint8_t> bytes;  ///< the accesses of each size; those it does not know are null
    ItemAccess<std::uint16_t> words;
    ItemAccess<std::uint32_t> longs;
    ItemAccess<std::uint64_t> quads;
    const char* itemPrefix;       ///< printed before the address of a single read
    int itemDigits;               ///< fewest digits of that address
    int runDigits;                ///< fewest digits of the addresses that label the lines of a run
    bool anyRepeatFlagContinues;  ///< a single read goes on for any repeat flag but 0, else only for 1
    bool itemWriteMoves;          ///< a single write moves the remembered address
    bool runWriteMoves;           ///< a run of writes moves the remembered address behind itself
    RunFile runFile;
    UpperCasing runCasing;  ///< of a run; the text of a single access is turned as a whole
};

/// A command text taken apart as far as its word.
struct MemoryCommand {
    Tokens arguments;      ///< what follows the word
    char operation;        ///< 'R' or 'W', or 0 when the word is none of the family's
    std::size_t itemSize;  ///< 1, 2, 4 or 8 bytes
    bool isRun;            ///< the word ends in 'S'
};

/// Upper-cases the text and splits off its command word.
MemoryCommand parseMemoryCommand(const MemoryFamily& family, char* cmdText, UpperCasing casing);

/// Reads or writes one item and returns the handler's status. `last` is the family's remembered address.
int accessItem(const MemoryFamily& family, MemoryCommand& command, int repeat, std::uint64_t& last);

/// Reads or writes a run of items and returns the handler's status. `next` is the family's remembered address.
int accessRun(const MemoryFamily& family, MemoryCommand& command, int repeat, std::uint64_t& next);

/// A handler whose words are all of one item: parse, refuse any other word, access.
int runItemCommand(const MemoryFamily& family, char* cmdText, int repeat, std::uint64_t& last);

/// A handler whose words are all of a run.
int runRunCommand(const MemoryFamily& family, char* cmdText, int repeat, std::uint64_t& next);

/// Where a run begins and how many items it has.
struct Run {
    std::uint64_t start;
    std::int32_t count;
};

/// Takes the address (0 when absent) and the count (1 when absent) of a run of reads; a repeat goes on at `next`.
Run takeRun(Tokens& arguments, int repeat, std::uint64_t next);

/// The address just past a run; its start when the run is empty.
std::uint64_t endOf(const Run& run, std::size_t itemSize);

/// Whether a run's buffer can be asked for: sizes are signed 32-bit numbers of bytes, and a product beyond them must
/// never give a buffer smaller than what is put into it.
bool fitsBuffer(const Run& run, std::size_t itemSize);

/// A zeroed buffer of the run's size; null, with a line on standard error, when there is no memory for it. Only for
/// runs that fit a buffer.
HeapPointer<void> allocateRun(const Run& run, std::size_t itemSize);

#endif
