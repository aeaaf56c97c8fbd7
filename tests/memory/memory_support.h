/**
 * @file memory_support.h
 * What the tests of the memory commands share: the families, the item widths, and what a command of a family is
 * expected to print and to call.
 */
#ifndef MEMORY_SUPPORT_H
#define MEMORY_SUPPORT_H

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "console_support.h"
#include "tovira_parse/handlers.h"

namespace memory_test
{

using console_test::bytes;
using console_test::call;
using console_test::ConsoleTest;
using console_test::FolderTest;
using console_test::Outcome;
using console_test::readFile;
using console_test::runLine;
using console_test::takeDeviceCalls;
using console_test::writeFile;

using Lines = std::vector<std::string>;

/** Width of an item. */
struct Width {
    char letter;              /**< as the command words have it */
    const char* name;         /**< as the library's functions have it */
    std::uint64_t size;       /**< bytes */
    std::size_t itemsPerLine; /**< of a run that is printed */
};

inline constexpr Width kByte{'b', "Byte", 1, 16};
inline constexpr Width kWord{'w', "Word", 2, 8};
inline constexpr Width kLong{'l', "Long", 4, 4};
inline constexpr Width kQuad{'q', "Quad", 8, 2};

/** Memory commands that share their shape. */
struct Family {
    const char* name;
    char letter;          /**< first of the command words */
    const char* function; /**< what the library's functions begin with */
    int labelDigits;      /**< least number of digits of an address */
    std::uint64_t base;   /**< an address such as the family's users type */
    CmdHandler single;
    CmdHandler run;
    recording_vek::SparseMemory& (*memory)();
};

inline constexpr Family kVideo{"Video", 'v', "vekVram", 8, 0x1000, doVram, doMultVram, recording_vek::videoMemory};
inline constexpr Family kKernel{"Kernel",           'k',    "vekKmem",  16,
                                0xffff888000001000, doKmem, doMultKmem, recording_vek::kernelMemory};
inline constexpr Family kAmba{"Amba", 'a', "vekAmba", 8, 0x1000100, doAmba, doMultAmba, recording_vek::ambaBus};

/** A family's commands of one width. */
struct Commands {
    Family family;
    Width width;

    std::string read() const { return word('r') + ' '; }
    std::string write() const { return word('w') + ' '; }
    std::string readRun() const { return word('r') + "s "; }
    std::string writeRun() const { return word('w') + "s "; }

    /** The call that reads an item. */
    std::string readCall(std::uint64_t address) const;
    /** The call that writes an item. */
    std::string writeCall(std::uint64_t address, std::uint64_t value) const;
    /** The calls that read a run of items. */
    Lines readCalls(std::uint64_t start, std::size_t count) const;
    /** The calls that write a run of items. */
    Lines writeCalls(std::uint64_t start, std::size_t count, std::uint64_t value) const;

    std::string readFunction() const { return std::string(family.function) + "Read" + width.name; }
    std::string writeFunction() const { return std::string(family.function) + "Write" + width.name; }

    /** What reading an item prints. */
    std::string item(std::uint64_t address, std::uint64_t value) const;
    /** What reading a run of the family's memory prints. */
    std::string run(std::uint64_t start, std::size_t count) const;
    /** What reading a run of items prints when they hold these values. */
    std::string runOf(std::uint64_t start, const std::vector<std::uint64_t>& values) const;
    /** The family's memory from an address on, as raw bytes. */
    std::string contents(std::uint64_t start, std::size_t size) const;

    /** The lowest bits of a value, as many as an item has. */
    std::uint64_t truncated(std::uint64_t value) const;

private:
    std::string word(char operation) const { return {family.letter, operation, width.letter}; }
    std::uint64_t peek(std::uint64_t address) const;
};

/** For messages of failed tests. */
void PrintTo(const Commands& commands, std::ostream* stream);

/** A name for each set of commands, for INSTANTIATE_TEST_SUITE_P. */
std::string commandsName(const ::testing::TestParamInfo<Commands>& info);

/** All widths of all families. */
std::vector<Commands> allCommands();

/** Those whose runs are made of single accesses: all but the longs of video memory. */
std::vector<Commands> itemRunCommands();

/** Those whose runs are saved to a file by the program itself. */
std::vector<Commands> savedRunCommands();

/** A number as it is typed, without a prefix. */
std::string hex(std::uint64_t number);

/** Lines of a dump of bytes, as every dump of the console has them. */
std::string dump(std::uint64_t address, const std::string& contents);

/** Gives each byte of a range a value that its neighbours do not have, half of them 0x80 and above. */
void fillWithPattern(recording_vek::SparseMemory& memory, std::uint64_t start, std::size_t size);

}  // namespace memory_test

#endif
