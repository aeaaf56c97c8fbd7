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
    {"crb", doCrtcReg, kEveryPath, 1, "read a byte on crtc 0 registr region(hex)",
     "crb [adr]\n"
     "\t[adr]: the address of read on crtc 0 register region"},
    {"cwb", doCrtcReg, kEveryPath, 0, "write a byte on registr region(hex)",
     "cwb [adr] [data]\n"
     "\t[adr]: the address of write on crtc 0 register region\n"
     "\t[data]: write a byte data on crtc 0 register region"},
    {"crbs", doCrtcReg, kEveryPath, 1, "read a byte for cnt times on register region(hex), and save to [fname]",
     "crbs [adr] [cnt] [fname]\n"
     "\t[adr]: the read auto inc address on crtc 0 register region\n"
     "\t[cnt]: the times of read a byte\n"
     "\t[fname]: file name to save"},
    {"vrb", doVram, kEveryPath, 1, "read a byte on vram region(hex)",
     "vrb [adr]\n"
     "\t[adr]: the address of read on vram region"},
    {"vrw", doVram, kEveryPath, 1, "read two byte on vram region(hex)",
     "vrw [adr]\n"
     "\t[adr]: the address of read on vram region"},
    {"vrl", doVram, kEveryPath, 1, "read four byte on vram region(hex)",
     "vrl [adr]\n"
     "\t[adr]: the address of read on vram region"},
    {"vrq", doVram, kEveryPath, 1, "read eight byte on vram region(hex)",
     "vrq [adr]\n"
     "\t[adr]: the address of read on vram region"},
    {"vwb", doVram, kEveryPath, 0, "write a byte on vram region(hex)",
     "vwb [adr] [data]\n"
     "\t[adr]: the address of write on vram region\n"
     "\t[data]: write a byte data on vram region"},
    {"vww", doVram, kEveryPath, 0, "write two byte on vram region(hex)",
     "vww [adr] [data]\n"
     "\t[adr]: the address of write on vram region\n"
     "\t[data]: write two bytes data on vram region"},
    {"vwl", doVram, kEveryPath, 0, "write four byte on vram region(hex)",
     "vwl [adr] [data]\n"
     "\t[adr]: the address of write on vram region\n"
     "\t[data]: write four bytes data on vram region"},
    {"vwq", doVram, kEveryPath, 0, "write eight byte on vram region(hex)",
     "vwq [adr] [data]\n"
     "\t[adr]: the address of write on vram region\n"
     "\t[data]: write eight bytes data on vram region"},
    {"vrbs", doMultVram, kEveryPath, 1, "read a byte for cnt times with auto inc adr on vram region(hex)",
     "vrbs [adr] [cnt] [fname]\n"
     "\t[adr]: the read auto inc address on vram region\n"
     "\t[cnt]: the times of read a byte\n"
     "\t[fname]: filename to save data (optional)"},
    {"vrws", doMultVram, kEveryPath, 1, "read two bytes for cnt times with auto inc adr on vram region(hex)",
     "vrws [adr] [cnt] [fname]\n"
     "\t[adr]: the read auto inc address on vram region\n"
     "\t[cnt]: the times of read two bytes\n"
     "\t[fname]: filename to save data (optional)"},
    {"vrls", doMultVram, kEveryPath, 1, "read four bytes for cnt times with auto inc adr on vram region(hex)",
     "vrls [adr] [cnt] [fname]\n"
     "\t[adr]: the read auto inc address on vram region\n"
     "\t[cnt]: the times of read four bytes\n"
     "\t[fname]: filename to save data (optional)"},
    {"vrqs", doMultVram, kEveryPath, 1, "read eight bytes for cnt times with auto inc adr on vram region(hex)",
     "vrqs [adr] [cnt] [fname]\n"
     "\t[adr]: the read auto inc address on vram region\n"
     "\t[cnt]: the times of read eight bytes\n"
     "\t[fname]: filename to save data (optional)"},
    {"vwbs", doMultVram, kEveryPath, 0, "write a byte for cnt times with auto inc adr on vram region(hex)",
     "vwbs [adr] [cnt] [val]\n"
     "\t[adr]: the read auto inc address on vram region\n"
     "\t[cnt]: the times of write a byte\n"
     "\t[val]: the date of write a byte"},
    {"vwws", doMultVram, kEveryPath, 0, "write two bytes for cnt times with auto inc adr on vram region(hex)",
     "vwws [adr] [cnt] [val]\n"
     "\t[adr]: the read auto inc address on vram region\n"
     "\t[cnt]: the times of write two bytes\n"
     "\t[val]: the date of write two bytes"},
    {"vwls", doMultVram, kEveryPath, 0, "write four bytes for cnt times with auto inc adr on vram region(hex)",
     "vwls [adr] [cnt] [val]\n"
     "\t[adr]: the read auto inc address on vram region\n"
     "\t[cnt]: the times of write four bytes\n"
     "\t[val]: the value of write four bytes or the filename of vrams' file."},
    {"vwqs", doMultVram, kEveryPath, 0, "write eight bytes for cnt times with auto inc adr on vram region(hex)",
     "vwqs [adr] [cnt] [val]\n"
     "\t[adr]: the read auto inc address on vram region\n"
     "\t[cnt]: the times of write eight bytes\n"
     "\t[val]: the date of write eight bytes"},
    {"krb", doKmem, kEveryPath, 1, "read a byte with kernel virtual address(hex)",
     "krb [adr]\n"
     "\t[adr]: the read of kernel virtual address"},
    {"krw", doKmem, kEveryPath, 1, "read two bytes with kernel virtual address(hex)",
     "krw [adr]\n"
     "\t[adr]: the read of kernel virtual address"},
    {"krl", doKmem, kEveryPath, 1, "read four bytes with kernel virtual address(hex)",
     "krl [adr]\n"
     "\t[adr]: the read of kernel virtual address"},
    {"krq", doKmem, kEveryPath, 1, "read eight bytes with kernel virtual address(hex)",
     "krq [adr]\n"
     "\t[adr]: the read of kernel virtual address"},
    {"kwb", doKmem, kEveryPath, 0, "write a byte with kernel virtual address(hex)",
     "kwb [adr] [data]\n"
     "\t[adr]: the write of kernel virtual address\n"
     "\t[data]: write a byte data on kernel virtual address"},
    {"kww", doKmem, kEveryPath, 0, "write two bytes with kernel virtual address(hex)",
     "kww [adr] [data]\n"
     "\t[adr]: the write of kernel virtual address\n"
     "\t[data]: write two bytes data on kernel virtual address"},
    {"kwl", doKmem, kEveryPath, 0, "write four bytes with kernel virtual address(hex)",
     "kwl [adr] [data]\n"
     "\t[adr]: the write of kernel virtual address\n"
     "\t[data]: write four bytes data on kernel virtual address"},
    {"kwq", doKmem, kEveryPath, 0, "write eight bytes with kernel virtual address(hex)",
     "kwq [adr] [data]\n"
     "\t[adr]: the write of kernel virtual address\n"
     "\t[data]: write eight bytes data on kernel virtual address"},
    {"krbs", doMultKmem, kEveryPath, 1, "read a byte for cnt times on auto inc adr with kernel virtual address(hex)",
     "krbs [adr] [cnt]\n"
     "\t[adr]: the read auto inc address on kernel virtual address\n"
     "\t[cnt]: the times of read a byte"},
    {"krws", doMultKmem, kEveryPath, 1, "read two bytes for cnt times on auto inc adr with kernel virtual address(hex)",
     "krws [adr] [cnt]\n"
     "\t[adr]: the read auto inc address on kernel virtual address\n"
     "\t[cnt]: the times of read two bytes"},
    {"krls", doMultKmem, kEveryPath, 1,
     "read four bytes for cnt times on auto inc adr with kernel virtual address(hex)",
     "krls [adr] [cnt]\n"
     "\t[adr]: the read auto inc address on kernel virtual address\n"
     "\t[cnt]: the times of read four bytes"},
    {"krqs", doMultKmem, kEveryPath, 1,
     "read eight bytes for cnt times on auto inc adr with kernel virtual address(hex)",
     "krqs [adr] [cnt]\n"
     "\t[adr]: the read auto inc address on kernel virtual address\n"
     "\t[cnt]: the times of read eight bytes"},
    {"kwbs", doMultKmem, kEveryPath, 0, "write a byte for cnt times on auto inc adr with kernel virtual address(hex)",
     "kwbs [adr] [cnt] [val]\n"
     "\t[adr]: the read auto inc address on kernel virtual address\n"
     "\t[cnt]: the times of write a byte\n"
     "\t[val]: the date of write a byte"},
    {"kwws", doMultKmem, kEveryPath, 0,
     "write two bytes for cnt times on auto inc adr with kernel virtual address(hex)",
     "kwws [adr] [cnt] [val]\n"
     "\t[adr]: the read auto inc address on kernel virtual address\n"
     "\t[cnt]: the times of write two bytes\n"
     "\t[val]: the date of write two bytes"},
    {"kwls", doMultKmem, kEveryPath, 0,
     "write four bytes for cnt times on auto inc adr with kernel virtual address(hex)",
     "kwls [adr] [cnt] [val]\n"
     "\t[adr]: the read auto inc address on kernel virtual address\n"
     "\t[cnt]: the times of write four bytes\n"
     "\t[val]: the date of write four bytes"},
    {"kwqs", doMultKmem, kEveryPath, 0, "write a byte for cnt times on auto inc adr with kernel virtual address(hex)",
     "kwqs [adr] [cnt] [val]\n"
     "\t[adr]: the read auto inc address on kernel virtual address\n"
     "\t[cnt]: the times of write eight bytes\n"
     "\t[val]: the date of write eight bytes"},
    {"i2c", doI2c, kEveryPath, 0, "read or write on i2c set channel devadr",
     "i2c set [channel] [devadr] - set i2c bus to channel with slave device address (hex)\n"
     "\t[devadr]: the set device address(hex)\n"
     "i2c rb [subadr] - read a byte from subadr for the device set by i2cset (hex)\n"
     "\t[subadr]: subadress for device set by i2cset(hex)\n"
     "i2c wb [subadr] - write a byte to subadr for the device set by i2cset (hex)\n"
     "\t[subadr]: subadress for device set by i2cset(hex)\n"
     "i2c rbs [subadr] [fname] - count read count bytes from begin of subadr for the device set by i2cset (hex)\n"
     "\t[subadr]: subadress for device set by i2cset(hex)\n"
     "\t[fname]: filename to save data (optional)"},
    {"ddc", doDDC, kDriverOnly, 0, "hdmi ddc get edid",
     "\tddc [ch] [fname]\n"
     "\t[ch]: ddc channel, 0, 1, 2 or 3\n"
     "\t[fname]: filename to save data (optional)"},
    {"pci", doPCI, kDriverOnly, 0, "read or write pci configure register",
     "\tpci [adr] [val]\n"
     "\t[adr]: the address of read on pci configure register\n"
     "\t[val]: trite the value on kernel virtual address"},
    {"run/r", doRun, kAlways, 0, "Run the script", " "},
    {"load", doLoad, kAlways, 0, "load the multi-command for each line on the file",
     "load [fname]\n"
     "\t [fname] the file of preserved multi command"},
    {"hdmi", doHdmi, kEveryPath, 1, "HDMI interface operation",
     "hdmi [channel] phy r [adr] - HDMI phy read data (16-bit) from [adr] for [channel]\n"
     "hdmi [channel] phy rs [adr] [cnt]- HDMI phy read [cnt] data (16-bit) from [adr] for [channel]\n"
     "hdmi [channel] phy w [adr] [val] - HDMI phy write [val] (16-bit) to [adr] for [channel]\n"
     "hdmi [channel] phy st - HDMI phy config start for [channel]\n"
     "hdmi [channel] phy en - HDMI phy config end for [channel]\n"
     "hdmi [channel] phy re - HDMI phy reset for [channel]\n"
     "hdmi [channel] hpd r - HDMI hpd read data (8-bit) from phy_status0 reg for [channel]\n"
     " hdmi [channel] ddc i - HDMI ddc init\n"
     " hdmi [channel] ddc r [slave] [adr] - HDMI ddc read data (8-bit) from [adr] for [channel]\n"
     "hdmi [channel] ddc w [slave] [adr] [val] - HDMI ddc write [val] (8-bit) to [adr] for [channel]\n"
     "hdmi [channel] edid r - HDMI ddc read edid (256byte) from hdmi-sink for [channel]\n"
     "hdmi [channel] mode - HDMI display mode.\n"},
    {"edid", doEdid, kEveryPath, 1, "parse edid block",
     "edid parse (path) - parse edid file in the specified path. If path is not specified, parse the last result.\n"},
    {"arbs", doMultAmba, kEveryPath, 1, "read a byte for cnt times on register region(hex)",
     "arbs [adr] [cnt]\n"
     "\t[adr]: the read auto inc address on register region\n"
     "\t[cnt]: the times of read a byte"},
    {"arws", doMultAmba, kEveryPath, 1, "read two bytes for cnt times on registr region(hex)",
     "arws [adr] [cnt]\n"
     "\t[adr]: the read auto inc address on register region\n"
     "\t[cnt]: the times of read two byte"},
    {"arls", doMultAmba, kEveryPath, 1, "read four bytes for cnt times on registr region(hex)",
     "arls [adr] [cnt]\n"
     "\t[adr]: the read auto inc address on register region\n"
     "\t[cnt]: the times of read four bytes"},
    {"arqs", doMultAmba, kEveryPath, 1, "read eight bytes for cnt times on registr region(hex)",
     "arqs [adr] [cnt]\n"
     "\t[adr]: the read auto inc address on register region\n"
     "\t[cnt]: the times of read eight bytes"},
    {"awbs", doMultAmba, kEveryPath, 1, "write a byte for cnt times on register region(hex)",
     "awbs [adr] [cnt] [val]\n"
     "\t[adr]: the write auto inc address on register region\n"
     "\t[cnt]: the times of read a byte\n"
     "\t[val]: the date of write a byte"},
    {"awws", doMultAmba, kEveryPath, 1, "write two bytes for cnt times on registr region(hex)",
     "awws [adr] [cnt]\n"
     "\t[adr]: the write auto inc address on register region\n"
     "\t[cnt]: the times of read two byte\n"
     "\t[val]: the date of write two bytes"},
    {"awls", doMultAmba, kEveryPath, 1, "write four bytes for cnt times on registr region(hex)",
     "awls [adr] [cnt]\n"
     "\t[adr]: the write auto inc address on register region\n"
     "\t[cnt]: the times of read four bytes\n"
     "\t[val]: the date of write four bytes"},
    {"awqs", doMultAmba, kEveryPath, 1, "write eight bytes for cnt times on registr region(hex)",
     "awqs [adr] [cnt]\n"
     "\t[adr]: the write auto inc address on register region\n"
     "\t[cnt]: the times of read eight bytes\n"
     "\t[val]: the date of write eight bytes"},
    {"arb", doAmba, kEveryPath, 1, "read a byte on Amba region(hex)",
     "arb [adr]\n"
     "\t[adr]: the address of read on Amba region"},
    {"arw", doAmba, kEveryPath, 1, "read two bytes on Amba region(hex)",
     "arw [adr]\n"
     "\t[adr]: the address of read on Amba region"},
    {"arl", doAmba, kEveryPath, 1, "read four bytes on Amba region(hex)",
     "arl [adr]\n"
     "\t[adr]: the address of read on Amba region"},
    {"arq", doAmba, kEveryPath, 1, "read eight bytes on Amba region(hex)",
     "arq [adr]\n"
     "\t[adr]: the address of read on Amba region"},
    {"awb", doAmba, kEveryPath, 0, "write a byte on Amba region(hex)",
     "awb [adr] [data]\n"
     "\t[adr]: the address of write on Amba region\n"
     "\t[data]: write a byte data on Amba region"},
    {"aww", doAmba, kEveryPath, 0, "write two bytes on Amba region(hex)",
     "aww [adr] [data]\n"
     "\t[adr]: the address of write on Amba region\n"
     "\t[data]: write two bytes data on Amba region"},
    {"awl", doAmba, kEveryPath, 0, "write eight bytes on Amba region(hex)",
     "awl [adr] [data]\n"
     "\t[adr]: the address of write on Amba region\n"
     "\t[data]: write four bytes data on Amba region"},
    {"awq", doAmba, kEveryPath, 0, "write eight byte on Amba region(hex)",
     "awq [adr] [data]\n"
     "\t[adr]: the address of write on Amba region\n"
     "\t[data]: write eight bytes data on Amba region"},
    {"quit/q", doQuit, kAlways, 1, "Quit from command line", " "},
    {"help/h/?", doHelp, kAlways, 1, "show all help information",
     "help/h/? - show all cmd help information\n"
     "help/h/? [cmd] - show specific cmd help information\n"
     "\t[cmd]: all tovira_util_tool cmd"},
};

constexpr const char* kHiddenNames[] = {"query", "spi", "vlot", "clk"};

constexpr std::size_t kLongestName = 15;

// A name padded with NULs, so that two names compare as two numbers.
struct NameKey {
    std::uint64_t first;
    std::uint64_t second;

    constexpr bool operator==(const NameKey& other) const = default;
};

struct NamedRow {
    NameKey name;
    int row;
};

constexpr bool comesBefore(const NamedRow& one, const NamedRow& other)
{
    if (one.name.first != other.name.first) {
        return one.name.first < other.name.first;
    }
    if (one.name.second != other.name.second) {
        return one.name.second < other.name.second;
    }
    return one.row < other.row;
}

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

// Every name and alias with its row: in the order of the names, and rows of one name in table order.
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
    std::sort(named.begin(), named.end(), comesBefore);
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
    const NamedRow wanted{makeKey(word), from};
    const auto* const found = std::lower_bound(kNamedRows.begin(), kNamedRows.end(), wanted, comesBefore);
    return found != kNamedRows.end() && found->name == wanted.name ? found->row : kNoCmdRow;
}

bool hasAliases(const UtilCmd& cmd)
{
    return strchr(cmd.name, '/') != nullptr;
}
