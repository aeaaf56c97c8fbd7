#include "tovira_parse/command_table.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "tovira_parse/handlers.h"

namespace
{

// Every text stands as the console prints it; where names, briefs and usage texts disagree, they do so deliberately.
constexpr UtilCmd kCmdRows[] = {
    {"rrbs", doMultReg, kEveryPath, 1, "read a byte for cnt times on register region(hex), and save to [fname]",
     "rrbs [adr] [cnt] [fname]\n"
     "\t[adr]: the read auto inc address on register region\n"
     "\t[cnt]: the times of read a byte\n"
     "\t[fname]: file name to save"},
    {"rrws", doMultReg, kEveryPath, 1, "read two bytes for cnt times on registr region(hex), and save to [fname]",
     "rrws [adr] [cnt] [fname]\n"
     "\t[adr]: the read auto inc address on register region\n"
     "\t[cnt]: the times of read two byte\n"
     "\t[fname]: file name to save"},
    {"rrls", doMultReg, kEveryPath, 1, "read four bytes for cnt times on registr region(hex), and save to [fname]",
     "rrls [adr] [cnt] [fname]\n"
     "\t[adr]: the read auto inc address on register region\n"
     "\t[cnt]: the times of read four bytes\n"
     "\t[fname]: file name to save"},
    {"rrqs", doMultReg, kEveryPath, 1, "read eight bytes for cnt times on registr region(hex), and save to [fname]",
     "rrqs [adr] [cnt] [fname]\n"
     "\t[adr]: the read auto inc address on register region\n"
     "\t[cnt]: the times of read eight bytes\n"
     "\t[fname]: file name to save"},
    {"rwbs", doMultReg, kEveryPath, 1, "write a byte for cnt times on register region(hex)",
     "rwbs [adr] [cnt] [val]\n"
     "\t[adr]: the write auto inc address on register region\n"
     "\t[cnt]: the times of read a byte\n"
     "\t[val]: the date of write a byte"},
    {"rwws", doMultReg, kEveryPath, 1, "write two bytes for cnt times on registr region(hex)",
     "rwws [adr] [cnt]\n"
     "\t[adr]: the write auto inc address on register region\n"
     "\t[cnt]: the times of read two byte\n"
     "\t[val]: the date of write two bytes"},
    {"rwls", doMultReg, kEveryPath, 1, "write four bytes for cnt times on registr region(hex)",
     "rwls [adr] [cnt]\n"
     "\t[adr]: the write auto inc address on register region\n"
     "\t[cnt]: the times of read four bytes\n"
     "\t[val]: the date of write four bytes"},
    {"rwqs", doMultReg, kEveryPath, 1, "write eight bytes for cnt times on registr region(hex)",
     "rwqs [adr] [cnt]\n"
     "\t[adr]: the write auto inc address on register region\n"
     "\t[cnt]: the times of read eight bytes\n"
     "\t[val]: the date of write eight bytes"},
    {"rrb", doReg, kEveryPath, 1, "read a byte on registr region(hex)",
     "rrb [adr]\n"
     "\t[adr]: the address of read on register region"},
    {"rrw", doReg, kEveryPath, 1, "read two bytes on registr region(hex)",
     "rrw [adr]\n"
     "\t[adr]: the address of read on register region"},
    {"rrl", doReg, kEveryPath, 1, "read four bytes on registr region(hex)",
     "rrl [adr]\n"
     "\t[adr]: the address of read on register region"},
    {"rrq", doReg, kEveryPath, 1, "read eight bytes on registr region(hex)",
     "rrq [adr]\n"
     "\t[adr]: the address of read on register region"},
    {"rwb", doReg, kEveryPath, 0, "write a byte on registr region(hex)",
     "rwb [adr] [data]\n"
     "\t[adr]: the address of write on register region\n"
     "\t[data]: write a byte data on register region"},
    {"rww", doReg, kEveryPath, 0, "write two bytes on registr region(hex)",
     "rww [adr] [data]\n"
     "\t[adr]: the address of write on register region\n"
     "\t[data]: write two bytes data on register region"},
    {"rwl", doReg, kEveryPath, 0, "write eight bytes on registr region(hex)",
     "rwl [adr] [data]\n"
     "\t[adr]: the address of write on register region\n"
     "\t[data]: write four bytes data on register region"},
    {"rwq", doReg, kEveryPath, 0, "write eight byte on registr region(hex)",
     "rwq [adr] [data]\n"
     "\t[adr]: the address of write on register region\n"
     "\t[data]: write eight bytes data on register region"},
    {"run/r", doRun, kAlways, 0, "Run the script", " "},
    {"load", doLoad, kAlways, 0, "load the multi-command for each line on the file",
     "load [fname]\n"
     "\t [fname] the file of preserved multi command"},
    {"quit/q", doQuit, kAlways, 1, "Quit from command line", " "},
    {"help/h/?", doHelp, kAlways, 1, "show all help information",
     "help/h/? - show all cmd help information\n"
     "help/h/? [cmd] - show specific cmd help information\n"
     "\t[cmd]: all tovira_util_tool cmd"},
};

constexpr const char* kHiddenNames[] = {"query", "spi", "vlot", "clk"};

constexpr std::size_t kLongestName = 15;

// A name padded with NULs, so that two names compare as two numbers.
using NameKey = std::array<std::uint64_t, 2>;

struct NamedRow {
    NameKey name;
    int row;
};

constexpr NameKey makeKey(std::string_view name)
{
    std::array<char, sizeof(NameKey)> characters{};
    std::copy(name.begin(), name.end(), characters.begin());
    return std::bit_cast<NameKey>(characters);
}

constexpr std::size_t countNames()
{
    std::size_t names = 0;
    for (const UtilCmd& cmd : kCmdRows) {
        const std::string_view name = cmd.name;
        names += 1 + static_cast<std::size_t>(std::count(name.begin(), name.end(), '/'));
    }
    return names;
}

// Every name and alias with its row, in table order.
constexpr auto kNamedRows = [] {
    std::array<NamedRow, countNames()> named{};
    std::size_t next = 0;
    for (int row = 0; row < static_cast<int>(std::size(kCmdRows)); ++row) {
        std::string_view rest = kCmdRows[row].name;
        while (!rest.empty()) {
            const std::string_view name = rest.substr(0, rest.find('/'));
            named[next++] = {makeKey(name), row};
            rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        }
    }
    return named;
}();

}  // namespace

constinit const std::span<const UtilCmd> g_util_cmd = kCmdRows;
constinit const std::span<const char* const> g_blacklist_cmd = kHiddenNames;

int findCmdRow(std::string_view word, int from)
{
    if (word.size() > kLongestName) {
        return kNoCmdRow;
    }
    const NameKey key = makeKey(word);
    for (const NamedRow& named : kNamedRows) {
        if (named.name == key && named.row >= from) {
            return named.row;
        }
    }
    return kNoCmdRow;
}

bool hasAliases(const UtilCmd& cmd)
{
    return strchr(cmd.name, '/') != nullptr;
}
