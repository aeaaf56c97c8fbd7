#include "expected_commands.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace console_test
{
namespace
{

constexpr std::array kLanguage = {
    ExpectedCommand{"rrbs", 7, 1, "read a byte for cnt times on register region(hex), and save to [fname]",
                    "rrbs [adr] [cnt] [fname]\n"
                    "\t[adr]: the read auto inc address on register region\n"
                    "\t[cnt]: the times of read a byte\n"
                    "\t[fname]: file name to save"},
    ExpectedCommand{"rrws", 7, 1, "read two bytes for cnt times on registr region(hex), and save to [fname]",
                    "rrws [adr] [cnt] [fname]\n"
                    "\t[adr]: the read auto inc address on register region\n"
                    "\t[cnt]: the times of read two byte\n"
                    "\t[fname]: file name to save"},
    ExpectedCommand{"rrls", 7, 1, "read four bytes for cnt times on registr region(hex), and save to [fname]",
                    "rrls [adr] [cnt] [fname]\n"
                    "\t[adr]: the read auto inc address on register region\n"
                    "\t[cnt]: the times of read four bytes\n"
                    "\t[fname]: file name to save"},
    ExpectedCommand{"rrqs", 7, 1, "read eight bytes for cnt times on registr region(hex), and save to [fname]",
                    "rrqs [adr] [cnt] [fname]\n"
                    "\t[adr]: the read auto inc address on register region\n"
                    "\t[cnt]: the times of read eight bytes\n"
                    "\t[fname]: file name to save"},
    ExpectedCommand{"rwbs", 7, 1, "write a byte for cnt times on register region(hex)",
                    "rwbs [adr] [cnt] [val]\n"
                    "\t[adr]: the write auto inc address on register region\n"
                    "\t[cnt]: the times of read a byte\n"
                    "\t[val]: the date of write a byte"},
    ExpectedCommand{"rwws", 7, 1, "write two bytes for cnt times on registr region(hex)",
                    "rwws [adr] [cnt]\n"
                    "\t[adr]: the write auto inc address on register region\n"
                    "\t[cnt]: the times of read two byte\n"
                    "\t[val]: the date of write two bytes"},
    ExpectedCommand{"rwls", 7, 1, "write four bytes for cnt times on registr region(hex)",
                    "rwls [adr] [cnt]\n"
                    "\t[adr]: the write auto inc address on register region\n"
                    "\t[cnt]: the times of read four bytes\n"
                    "\t[val]: the date of write four bytes"},
    ExpectedCommand{"rwqs", 7, 1, "write eight bytes for cnt times on registr region(hex)",
                    "rwqs [adr] [cnt]\n"
                    "\t[adr]: the write auto inc address on register region\n"
                    "\t[cnt]: the times of read eight bytes\n"
                    "\t[val]: the date of write eight bytes"},
    ExpectedCommand{"rrb", 7, 1, "read a byte on registr region(hex)",
                    "rrb [adr]\n"
                    "\t[adr]: the address of read on register region"},
    ExpectedCommand{"rrw", 7, 1, "read two bytes on registr region(hex)",
                    "rrw [adr]\n"
                    "\t[adr]: the address of read on register region"},
    ExpectedCommand{"rrl", 7, 1, "read four bytes on registr region(hex)",
                    "rrl [adr]\n"
                    "\t[adr]: the address of read on register region"},
    ExpectedCommand{"rrq", 7, 1, "read eight bytes on registr region(hex)",
                    "rrq [adr]\n"
                    "\t[adr]: the address of read on register region"},
    ExpectedCommand{"rwb", 7, 0, "write a byte on registr region(hex)",
                    "rwb [adr] [data]\n"
                    "\t[adr]: the address of write on register region\n"
                    "\t[data]: write a byte data on register region"},
    ExpectedCommand{"rww", 7, 0, "write two bytes on registr region(hex)",
                    "rww [adr] [data]\n"
                    "\t[adr]: the address of write on register region\n"
                    "\t[data]: write two bytes data on register region"},
    ExpectedCommand{"rwl", 7, 0, "write eight bytes on registr region(hex)",
                    "rwl [adr] [data]\n"
                    "\t[adr]: the address of write on register region\n"
                    "\t[data]: write four bytes data on register region"},
    ExpectedCommand{"rwq", 7, 0, "write eight byte on registr region(hex)",
                    "rwq [adr] [data]\n"
                    "\t[adr]: the address of write on register region\n"
                    "\t[data]: write eight bytes data on register region"},
    ExpectedCommand{"crb", 7, 1, "read a byte on crtc 0 registr region(hex)",
                    "crb [adr]\n"
                    "\t[adr]: the address of read on crtc 0 register region"},
    ExpectedCommand{"cwb", 7, 0, "write a byte on registr region(hex)",
                    "cwb [adr] [data]\n"
                    "\t[adr]: the address of write on crtc 0 register region\n"
                    "\t[data]: write a byte data on crtc 0 register region"},
    ExpectedCommand{"crbs", 7, 1, "read a byte for cnt times on register region(hex), and save to [fname]",
                    "crbs [adr] [cnt] [fname]\n"
                    "\t[adr]: the read auto inc address on crtc 0 register region\n"
                    "\t[cnt]: the times of read a byte\n"
                    "\t[fname]: file name to save"},
    ExpectedCommand{"vrb", 7, 1, "read a byte on vram region(hex)",
                    "vrb [adr]\n"
                    "\t[adr]: the address of read on vram region"},
    ExpectedCommand{"vrw", 7, 1, "read two byte on vram region(hex)",
                    "vrw [adr]\n"
                    "\t[adr]: the address of read on vram region"},
    ExpectedCommand{"vrl", 7, 1, "read four byte on vram region(hex)",
                    "vrl [adr]\n"
                    "\t[adr]: the address of read on vram region"},
    ExpectedCommand{"vrq", 7, 1, "read eight byte on vram region(hex)",
                    "vrq [adr]\n"
                    "\t[adr]: the address of read on vram region"},
    ExpectedCommand{"vwb", 7, 0, "write a byte on vram region(hex)",
                    "vwb [adr] [data]\n"
                    "\t[adr]: the address of write on vram region\n"
                    "\t[data]: write a byte data on vram region"},
    ExpectedCommand{"vww", 7, 0, "write two byte on vram region(hex)",
                    "vww [adr] [data]\n"
                    "\t[adr]: the address of write on vram region\n"
                    "\t[data]: write two bytes data on vram region"},
    ExpectedCommand{"vwl", 7, 0, "write four byte on vram region(hex)",
                    "vwl [adr] [data]\n"
                    "\t[adr]: the address of write on vram region\n"
                    "\t[data]: write four bytes data on vram region"},
    ExpectedCommand{"vwq", 7, 0, "write eight byte on vram region(hex)",
                    "vwq [adr] [data]\n"
                    "\t[adr]: the address of write on vram region\n"
                    "\t[data]: write eight bytes data on vram region"},
    ExpectedCommand{"vrbs", 7, 1, "read a byte for cnt times with auto inc adr on vram region(hex)",
                    "vrbs [adr] [cnt] [fname]\n"
                    "\t[adr]: the read auto inc address on vram region\n"
                    "\t[cnt]: the times of read a byte\n"
                    "\t[fname]: filename to save data (optional)"},
    ExpectedCommand{"vrws", 7, 1, "read two bytes for cnt times with auto inc adr on vram region(hex)",
                    "vrws [adr] [cnt] [fname]\n"
                    "\t[adr]: the read auto inc address on vram region\n"
                    "\t[cnt]: the times of read two bytes\n"
                    "\t[fname]: filename to save data (optional)"},
    ExpectedCommand{"vrls", 7, 1, "read four bytes for cnt times with auto inc adr on vram region(hex)",
                    "vrls [adr] [cnt] [fname]\n"
                    "\t[adr]: the read auto inc address on vram region\n"
                    "\t[cnt]: the times of read four bytes\n"
                    "\t[fname]: filename to save data (optional)"},
    ExpectedCommand{"vrqs", 7, 1, "read eight bytes for cnt times with auto inc adr on vram region(hex)",
                    "vrqs [adr] [cnt] [fname]\n"
                    "\t[adr]: the read auto inc address on vram region\n"
                    "\t[cnt]: the times of read eight bytes\n"
                    "\t[fname]: filename to save data (optional)"},
    ExpectedCommand{"vwbs", 7, 0, "write a byte for cnt times with auto inc adr on vram region(hex)",
                    "vwbs [adr] [cnt] [val]\n"
                    "\t[adr]: the read auto inc address on vram region\n"
                    "\t[cnt]: the times of write a byte\n"
                    "\t[val]: the date of write a byte"},
    ExpectedCommand{"vwws", 7, 0, "write two bytes for cnt times with auto inc adr on vram region(hex)",
                    "vwws [adr] [cnt] [val]\n"
                    "\t[adr]: the read auto inc address on vram region\n"
                    "\t[cnt]: the times of write two bytes\n"
                    "\t[val]: the date of write two bytes"},
    ExpectedCommand{"vwls", 7, 0, "write four bytes for cnt times with auto inc adr on vram region(hex)",
                    "vwls [adr] [cnt] [val]\n"
                    "\t[adr]: the read auto inc address on vram region\n"
                    "\t[cnt]: the times of write four bytes\n"
                    "\t[val]: the value of write four bytes or the filename of vrams' file."},
    ExpectedCommand{"vwqs", 7, 0, "write eight bytes for cnt times with auto inc adr on vram region(hex)",
                    "vwqs [adr] [cnt] [val]\n"
                    "\t[adr]: the read auto inc address on vram region\n"
                    "\t[cnt]: the times of write eight bytes\n"
                    "\t[val]: the date of write eight bytes"},
    ExpectedCommand{"krb", 7, 1, "read a byte with kernel virtual address(hex)",
                    "krb [adr]\n"
                    "\t[adr]: the read of kernel virtual address"},
    ExpectedCommand{"krw", 7, 1, "read two bytes with kernel virtual address(hex)",
                    "krw [adr]\n"
                    "\t[adr]: the read of kernel virtual address"},
    ExpectedCommand{"krl", 7, 1, "read four bytes with kernel virtual address(hex)",
                    "krl [adr]\n"
                    "\t[adr]: the read of kernel virtual address"},
    ExpectedCommand{"krq", 7, 1, "read eight bytes with kernel virtual address(hex)",
                    "krq [adr]\n"
                    "\t[adr]: the read of kernel virtual address"},
    ExpectedCommand{"kwb", 7, 0, "write a byte with kernel virtual address(hex)",
                    "kwb [adr] [data]\n"
                    "\t[adr]: the write of kernel virtual address\n"
                    "\t[data]: write a byte data on kernel virtual address"},
    ExpectedCommand{"kww", 7, 0, "write two bytes with kernel virtual address(hex)",
                    "kww [adr] [data]\n"
                    "\t[adr]: the write of kernel virtual address\n"
                    "\t[data]: write two bytes data on kernel virtual address"},
    ExpectedCommand{"kwl", 7, 0, "write four bytes with kernel virtual address(hex)",
                    "kwl [adr] [data]\n"
                    "\t[adr]: the write of kernel virtual address\n"
                    "\t[data]: write four bytes data on kernel virtual address"},
    ExpectedCommand{"kwq", 7, 0, "write eight bytes with kernel virtual address(hex)",
                    "kwq [adr] [data]\n"
                    "\t[adr]: the write of kernel virtual address\n"
                    "\t[data]: write eight bytes data on kernel virtual address"},
    ExpectedCommand{"krbs", 7, 1, "read a byte for cnt times on auto inc adr with kernel virtual address(hex)",
                    "krbs [adr] [cnt]\n"
                    "\t[adr]: the read auto inc address on kernel virtual address\n"
                    "\t[cnt]: the times of read a byte"},
    ExpectedCommand{"krws", 7, 1, "read two bytes for cnt times on auto inc adr with kernel virtual address(hex)",
                    "krws [adr] [cnt]\n"
                    "\t[adr]: the read auto inc address on kernel virtual address\n"
                    "\t[cnt]: the times of read two bytes"},
    ExpectedCommand{"krls", 7, 1, "read four bytes for cnt times on auto inc adr with kernel virtual address(hex)",
                    "krls [adr] [cnt]\n"
                    "\t[adr]: the read auto inc address on kernel virtual address\n"
                    "\t[cnt]: the times of read four bytes"},
    ExpectedCommand{"krqs", 7, 1, "read eight bytes for cnt times on auto inc adr with kernel virtual address(hex)",
                    "krqs [adr] [cnt]\n"
                    "\t[adr]: the read auto inc address on kernel virtual address\n"
                    "\t[cnt]: the times of read eight bytes"},
    ExpectedCommand{"kwbs", 7, 0, "write a byte for cnt times on auto inc adr with kernel virtual address(hex)",
                    "kwbs [adr] [cnt] [val]\n"
                    "\t[adr]: the read auto inc address on kernel virtual address\n"
                    "\t[cnt]: the times of write a byte\n"
                    "\t[val]: the date of write a byte"},
    ExpectedCommand{"kwws", 7, 0, "write two bytes for cnt times on auto inc adr with kernel virtual address(hex)",
                    "kwws [adr] [cnt] [val]\n"
                    "\t[adr]: the read auto inc address on kernel virtual address\n"
                    "\t[cnt]: the times of write two bytes\n"
                    "\t[val]: the date of write two bytes"},
    ExpectedCommand{"kwls", 7, 0, "write four bytes for cnt times on auto inc adr with kernel virtual address(hex)",
                    "kwls [adr] [cnt] [val]\n"
                    "\t[adr]: the read auto inc address on kernel virtual address\n"
                    "\t[cnt]: the times of write four bytes\n"
                    "\t[val]: the date of write four bytes"},
    ExpectedCommand{"kwqs", 7, 0, "write a byte for cnt times on auto inc adr with kernel virtual address(hex)",
                    "kwqs [adr] [cnt] [val]\n"
                    "\t[adr]: the read auto inc address on kernel virtual address\n"
                    "\t[cnt]: the times of write eight bytes\n"
                    "\t[val]: the date of write eight bytes"},
    ExpectedCommand{
        "i2c", 7, 0, "read or write on i2c set channel devadr",
        "i2c set [channel] [devadr] - set i2c bus to channel with slave device address (hex)\n"
        "\t[devadr]: the set device address(hex)\n"
        "i2c rb [subadr] - read a byte from subadr for the device set by i2cset (hex)\n"
        "\t[subadr]: subadress for device set by i2cset(hex)\n"
        "i2c wb [subadr] - write a byte to subadr for the device set by i2cset (hex)\n"
        "\t[subadr]: subadress for device set by i2cset(hex)\n"
        "i2c rbs [subadr] [fname] - count read count bytes from begin of subadr for the device set by i2cset (hex)\n"
        "\t[subadr]: subadress for device set by i2cset(hex)\n"
        "\t[fname]: filename to save data (optional)"},
    ExpectedCommand{
        "zv", 7, 0, "Operate of zv",
        "zv init [-id] [-i2c_channel] [-i2c_sa] [-layer] - Init a zoom video\n"
        "\t[-id]: zoom video port, 0 or 1\n"
        "\t[-i2c_channel]: i2c controller channel, 0 or 1\n"
        "\t[-i2c_sa]: IICSA pin level for SAA7111A chip, 0 or 1\n"
        "\t[-layer]: hardware layer for zoom video, 0 for hard layer 1, while 1 for hard layer 3\n"
        "zv start [-id] [-w] [-h] [-x] [-y] [-cut_left] [-zoomw] [-zoomh] [-connector] - Start zoom video capture\n"
        "\t[-id]: zoom video port, 0 or 1\n"
        "\t[-w], [-h]: zoom video window size\n"
        "\t[-x], [-y]: zoom video window position\n"
        "\t[-zoomw], [zoomh]: zoom factor. 0: no zoom; 1: x2 zoom; 2: x4 zoom; 3: x8 zoom\n"
        "\t[-crtc]: 0: display in crtc 0; 1: display in crtc 1zv stop [-id]\n"
        "\t- stop a zoom video. If id is not assigned, the last initialized id is used\n"
        "zv restart [-id]\n"
        "\t- restart a zoom video. If id is not assigned, the last initialized id is used"},
    ExpectedCommand{"ddc", 1, 0, "hdmi ddc get edid",
                    "\tddc [ch] [fname]\n"
                    "\t[ch]: ddc channel, 0, 1, 2 or 3\n"
                    "\t[fname]: filename to save data (optional)"},
    ExpectedCommand{"pci", 1, 0, "read or write pci configure register",
                    "\tpci [adr] [val]\n"
                    "\t[adr]: the address of read on pci configure register\n"
                    "\t[val]: trite the value on kernel virtual address"},
    ExpectedCommand{"temp", 7, 0, "read two sensor temperature",
                    "temp [sensor_num]\n"
                    "\t [sensor]: the temp cmd will choose which sensor temperature to show (1 or 2)\n"
                    "\t if not [sensor]: the temd cmd will show both two sensor temperature\n"},
    ExpectedCommand{"volt", 7, 0, "read two sensor voltage",
                    "volt [sensor_num]\n"
                    "\t [sensor]: the temp cmd will choose which sensor voltage to show (1 or 2)\n"
                    "\t if not [sensor]: the temd cmd will show both two sensor voltage\n"},
    ExpectedCommand{"vlot", 7, 0, "read two sensor voltage",
                    "vlot [sensor_num]\n"
                    "\t [sensor]: the temp cmd will choose which sensor voltage to show (1 or 2)\n"
                    "\t if not [sensor]: the temd cmd will show both two sensor voltage\n"},
    ExpectedCommand{"process", 7, 0, "read sensor process", " "},
    ExpectedCommand{"version/ver", 1, 0, "return vekcore version", " "},
    ExpectedCommand{"info", 1, 0, "show the information of GPU states", " "},
    ExpectedCommand{"run/r", 15, 0, "Run the script", " "},
    ExpectedCommand{"load", 15, 0, "load the multi-command for each line on the file",
                    "load [fname]\n"
                    "\t [fname] the file of preserved multi command"},
    ExpectedCommand{
        "spi", 7, 0, "SPI flash operation include read erase and program",
        "spi read [adr] [size] [fname] - read data from [adr] with [size] bytes from SPI flash, and save to [fname]\n"
        "\t[adr]: byte address in SPI flash\n"
        "\t[size]: byte size to read\n"
        "\t[fname]: file name to save\n"
        "spi erase [adr] [size] - erase data from [adr] with [size] bytes from SPI flash include block mode or sector "
        "mode\n"
        "\t[adr]: erase address in SPI flash\n"
        "\t[size]: erase size in SPI flash (optional)\n"
        "spi program [adr] [fname] - write data from [fname] on [adr] from SPI flash\n"
        "\t[adr]: byte address in SPI flash\n"
        "\t[fname]: file name to program on\n"
        "spi prot - protect the all spi area to avoid earse and progarm cmd\n"
        "spi unprot - to unlock the spi protect cmd, then can earse and progarm all spi area"},
    ExpectedCommand{"vga", 7, 1, "VGA interface operation",
                    "vga [channel] r [gain] - set vga red channel gain\n"
                    "vga [channel] g [gain] - set vga green channel gain\n"
                    "vga [channel] b [gain] - set vga blue channel gain\n"
                    "vga [channel] c [red_gain] [green_gain] [blue_gain] - set vga all color channel gain\n"
                    "vga [channel] mode - get vga display mode"},
    ExpectedCommand{"dvo", 7, 1, "DVO interface operation", "dvo [channel] mode - read dvo display mode"},
    ExpectedCommand{
        "dp", 7, 1, "DP interface operation",
        "dp [channel] init - DP initialize for [channel]\n"
        "dp [channel] aux r [adr] - DP aux read data (8-bit) from [adr] for [channel]\n"
        "dp [channel] i2c r [adr] - DP i2c read data (8-bit) from [adr] for [channel]\n"
        "dp [channel] aux w [adr] [val] - DP aux write [val] (8-bit) to [adr] for [channel]\n"
        "dp [channel] ddc - get edid throught i2c over aux for DP channel\n"
        "dp [channel] phy r [adr] - DP phy read data (32-bit) from [adr] for [channel]\n"
        "dp [channel] phy w [adr] [val] - DP phy write [val] (32-bit) to [adr] for [channel]\n"
        "dp [channel] cdb r [adr] - DP cdb read data (16-bit) from [adr] for [channel]\n"
        "dp [channel] cdb w [adr] [val] - DP cdb write [val] (16-bit) to [adr] for [channel]\n"
        "dp [channel] aux rs [adr] [cnt] - DP aux read [cnt] bytes (8-bit) from [adr] for [channel]\n"
        "dp [channel] i2c rs [adr] [cnt] - DP i2c read [cnt] bytes (8-bit) from [adr] for [channel]\n"
        "dp [channel] phy rs [adr] [cnt] - DP phy read [cnt] double-words (32-bit) from [adr] for [channel]\n"
        "dp [channel] cdb rs [adr] [cnt] - DP cdb read [cnt] words (16-bit) from [adr] for [channel]\n"
        "dp [channel] st [state] - set edp self test mode state, [0] = close [1] = open\n"
        "dp [channel] mode - dp display mode\n"},
    ExpectedCommand{"edp", 7, 1, "eDP interface operation",
                    "edp pwm [hz] - edp set pwm hz from 200 to 1M, usually 1K to 2K\n"
                    "edp light [percent] - edp set light percent from 0 to 0x64\n"
                    "edp pwmen - edp change pwm hz and duty enable, after wirte new value"},
    ExpectedCommand{"hdmi", 7, 1, "HDMI interface operation",
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
    ExpectedCommand{"query", 7, 1, "get hardware info",
                    "query             - query all the info from kernel\n"
                    "query id          - query the vendor ID from kernel\n"
                    "query axi         - query the axi frequency from kernel\n"
                    "query vpu         - query the vpu frequency from kernel\n"
                    "query 3d          - query the 3d frequency from kernel\n"
                    "query 2d          - query the 2d frequency from kernel\n"
                    "query ddr         - query the ddr frequency from kernel\n"
                    "query 3dcore      - query the 3dcore number from kernel\n"
                    "query 2dcore      - query the 2dcore number from kernel\n"
                    "query gop         - query the UEFI GOP info from kernel\n"
                    "query vram        - query the vram used rat form kernel\n"
                    "query card        - query the num of gpu card\n"
                    "query channel     - query the channel info from kernel\n"
                    "query bandwidth   - query the vram bandwidth from kernel\n"
                    "query load [core] - query the load[core] rate from kernel\n"
                    "query load        - query all teh load rate from kernel"},
    ExpectedCommand{
        "monitor", 7, 0,
        "Count the transaction status of the axi interface of the master device within a certain period of time",
        "monitor start/s - begin the transaction status and send its data to a file(Input 'd' to done the "
        "transaction)\n"
        "monitor final/f - final the transaction status\n"
        "monitor clear/c - clear the count transaction status in the last round\n"
        "monitor cycle/t - set log timer\n"},
    ExpectedCommand{"fan", 7, 0, "adjust the fan speed by input pwm, percent from 0 to 100",
                    "fan pwm - change the fan speed by manual pwm(0-100)\n"
                    "fan auto - close manual control,recover the kernel temperature adjustment\n"
                    "\t[pwm]: the fan speed pwm from 0 to 100"},
    ExpectedCommand{"thermal", 7, 1, "debug for fan control strategy",
                    "thermal temp - simulation temp for GPU, eg: thermal 50000\n"
                    "thermal q/quit - close debug\n"},
    ExpectedCommand{"crtc", 7, 1, "Crtc information",
                    "crtc output - read reg[0x024] and print the result\n"
                    "crtc gamma [id] <ga [val]> <br [val]> <ct [val]>\n"
                    "\t ga - gamma: xx:xx:xx (R:G:B = 0.0~1.0)\n"
                    "\t br - brightness = 0.0~1.0\n"
                    "\t ct - color temperature = 1000 ~ 25100, default: 6500\n"
                    "\t e.g. crtc gamma 0 ga 1.0:1.0:1.0 br 1.0 ct 6500\n"
                    "\t e.g. crtc gamma 1 br 0.5 ct 7000\n"
                    "crtc [channel] mode - get crtc display mode.\n"
                    "\t QZ201 channel : 0, 1, 2, 3\n"
                    "\t QZ202 channel : 0, 1\n"},
    ExpectedCommand{"card", 7, 1, "set Card count", "card [ID] - set gpu card ID"},
    ExpectedCommand{"edid", 7, 1, "parse edid block",
                    "edid parse (path) - parse edid file in the specified path. If path is not specified, parse the "
                    "last result.\n"},
    ExpectedCommand{"func", 7, 1, "set Function",
                    "func [options]\n"
                    "Function list:\n"
                    "func 3D: 1.RVT_GL_TRACE, 2.RVT_GLX_TRACE, 3.RVT_ES_TRACE 4.RVT_EGL_TRACE\n"
                    "func Texture\n"
                    "func Mgpu: 1.Combined, 2.Independent for n, 3.Balance\n"
                    "func On: View open function\n"
                    "func close: Close all function\n"},
    ExpectedCommand{"clk", 7, 1, "set QZ200 mode clk freq",
                    "clk [opetions]\n"
                    "clk list:\n"
                    "clk: show all QZ200 mode clk freq\n"
                    "clk axi/noc [val]: change the axi freq by input val\n"
                    "clk apb [val]: change the apb freq by input val\n"
                    "clk pcie/vpu [val]: change the PCIE and VPU mode freq by input val\n"
                    "clk 3d [val]: change the 3D core mode freq by input val\n"
                    "clk 3dsh [val]: change the 3D_sh mode freq by input val\n"
                    "clk 2d [val]: change the 2D core mode freq by input val\n"
                    "clk pll:show the bypass and off control pll and core\n"
                    "clk bypass [numb]: bypass pll and core, the numb by clk pll cmd\n"
                    "clk off [numb]: off pll and core, the numb by clk pll cmd\n"
                    "clk on [numb]: if bypass or off the pll and core, can use the cmd to turn on"},
    ExpectedCommand{"arbs", 7, 1, "read a byte for cnt times on register region(hex)",
                    "arbs [adr] [cnt]\n"
                    "\t[adr]: the read auto inc address on register region\n"
                    "\t[cnt]: the times of read a byte"},
    ExpectedCommand{"arws", 7, 1, "read two bytes for cnt times on registr region(hex)",
                    "arws [adr] [cnt]\n"
                    "\t[adr]: the read auto inc address on register region\n"
                    "\t[cnt]: the times of read two byte"},
    ExpectedCommand{"arls", 7, 1, "read four bytes for cnt times on registr region(hex)",
                    "arls [adr] [cnt]\n"
                    "\t[adr]: the read auto inc address on register region\n"
                    "\t[cnt]: the times of read four bytes"},
    ExpectedCommand{"arqs", 7, 1, "read eight bytes for cnt times on registr region(hex)",
                    "arqs [adr] [cnt]\n"
                    "\t[adr]: the read auto inc address on register region\n"
                    "\t[cnt]: the times of read eight bytes"},
    ExpectedCommand{"awbs", 7, 1, "write a byte for cnt times on register region(hex)",
                    "awbs [adr] [cnt] [val]\n"
                    "\t[adr]: the write auto inc address on register region\n"
                    "\t[cnt]: the times of read a byte\n"
                    "\t[val]: the date of write a byte"},
    ExpectedCommand{"awws", 7, 1, "write two bytes for cnt times on registr region(hex)",
                    "awws [adr] [cnt]\n"
                    "\t[adr]: the write auto inc address on register region\n"
                    "\t[cnt]: the times of read two byte\n"
                    "\t[val]: the date of write two bytes"},
    ExpectedCommand{"awls", 7, 1, "write four bytes for cnt times on registr region(hex)",
                    "awls [adr] [cnt]\n"
                    "\t[adr]: the write auto inc address on register region\n"
                    "\t[cnt]: the times of read four bytes\n"
                    "\t[val]: the date of write four bytes"},
    ExpectedCommand{"awqs", 7, 1, "write eight bytes for cnt times on registr region(hex)",
                    "awqs [adr] [cnt]\n"
                    "\t[adr]: the write auto inc address on register region\n"
                    "\t[cnt]: the times of read eight bytes\n"
                    "\t[val]: the date of write eight bytes"},
    ExpectedCommand{"arb", 7, 1, "read a byte on Amba region(hex)",
                    "arb [adr]\n"
                    "\t[adr]: the address of read on Amba region"},
    ExpectedCommand{"arw", 7, 1, "read two bytes on Amba region(hex)",
                    "arw [adr]\n"
                    "\t[adr]: the address of read on Amba region"},
    ExpectedCommand{"arl", 7, 1, "read four bytes on Amba region(hex)",
                    "arl [adr]\n"
                    "\t[adr]: the address of read on Amba region"},
    ExpectedCommand{"arq", 7, 1, "read eight bytes on Amba region(hex)",
                    "arq [adr]\n"
                    "\t[adr]: the address of read on Amba region"},
    ExpectedCommand{"awb", 7, 0, "write a byte on Amba region(hex)",
                    "awb [adr] [data]\n"
                    "\t[adr]: the address of write on Amba region\n"
                    "\t[data]: write a byte data on Amba region"},
    ExpectedCommand{"aww", 7, 0, "write two bytes on Amba region(hex)",
                    "aww [adr] [data]\n"
                    "\t[adr]: the address of write on Amba region\n"
                    "\t[data]: write two bytes data on Amba region"},
    ExpectedCommand{"awl", 7, 0, "write eight bytes on Amba region(hex)",
                    "awl [adr] [data]\n"
                    "\t[adr]: the address of write on Amba region\n"
                    "\t[data]: write four bytes data on Amba region"},
    ExpectedCommand{"awq", 7, 0, "write eight byte on Amba region(hex)",
                    "awq [adr] [data]\n"
                    "\t[adr]: the address of write on Amba region\n"
                    "\t[data]: write eight bytes data on Amba region"},
    ExpectedCommand{"ltc2990", 7, 1, "get voltage or current from LTC2990 chip by I2C",
                    "ltc2990 <i2c_channel> <addr1:0> <mode> [<Rsense0>] [<Rsense1>]\n"
                    "\t<i2c_channel>: i2c channel for LTC2990\n"
                    "\t<addr1:0>: i2c target address. 0: 0x98; 1: 0x9A; 2: 0x9C; 3: 0x9E\n"
                    "\t<mode>: mode for LTC2990. 6: measure Current1((V1-V2)/Rsense1) and Current2((V3-V4)/Rsense2);\n"
                    "\t\t 7: measure voltage V1, V2, V3, V4\n"
                    "\t[<Rsense1>]: Rsense1 * 1000 only for Current1. Such as 3 means 0.003 Ohm\n"
                    "\t[<Rsense2>]: Rsense2 * 1000 only for Current2. Such as 3 means 0.003 Ohm\n"},
    ExpectedCommand{"ina3221", 7, 1, "get voltage or current from INA3221 chip by I2C",
                    "ina3221 <i2c_channel> <Rsense1>  <Rsense2>\n"
                    "\t<i2c_channel>: i2c channel for INA3221\n"
                    "\t<Rsense1>: Rsense1 * 1000 only for Current1. Such as 3 means 0.003 Ohm\n"
                    "\t<Rsense2>: Rsense2 * 1000 only for Current2. Such as 3 means 0.003 Ohm\n"},
    ExpectedCommand{"ltc2991", 7, 1, "get voltage or current from LTC2991 chip by I2C",
                    "ltc2991 <i2c_channel> <addr7:0> <mode> [<Rsense1>] [<Rsense2>] [<Rsense3>] [<Rsense4>]\n"
                    "\t<i2c_channel>: i2c channel for LTC2991\n"
                    "\t<addr7:0>: using 5 . i2c target address. 0: 0x90; 1: 0x92; 2: 0x94; 3: 0x96; 4: 0x98; 5:0x9A; "
                    "6:0x9C; 7:0x9E\n"
                    "\t<mode>: mode for LTC2991. 1: measure Current1((V1-V2)/Rsense1) and Current2((V3-V4)/Rsense2);\n"
                    "\t\t 0: measure voltage V1, V2, V3, V4, V5, V6, V7, V8\n"
                    "\t[<Rsense1>]: Rsense1 * 1000 only for Current1. Such as 3 means 0.003 Ohm\n"
                    "\t[<Rsense2>]: Rsense2 * 1000 only for Current2. Such as 3 means 0.003 Ohm\n"
                    "\t[<Rsense3>]: Rsense3 * 1000 only for Current2. Such as 3 means 0.003 Ohm\n"
                    "\t[<Rsense4>]: Rsense4 * 1000 only for Current2. Such as 3 means 0.003 Ohm\n"},
    ExpectedCommand{"power", 1, 0, "get or set power state",
                    "power [state]\n"
                    "\t[state]: if [state] is valid, set power state, otherwise get power state.\n"
                    "\t\t0: power performance; 1: power save; 2: power standby; others: invalid\n"},
    ExpectedCommand{"mcu", 7, 1, "Mcu aux operation",
                    "mcu aux r  [adr] - DP aux read data (8-bit) from [adr]\n"
                    "mcu aux w  [adr] [val] - DP aux write [val] (8-bit) to [adr]\n"
                    "mcu aux rs [adr] [cnt] - DP aux read [cnt] bytes (8-bit) from [adr]\n"
                    "mcu aux ws [adr] [cnt] [val]- DP aux write [cnt] bytes (8-bit) [val] to [adr]\n"
                    "mcu i2c r  [adr] - DP i2c read data (8-bit) from [adr]\n"
                    "mcu i2c w  [adr] - DP i2c write data (8-bit) from [adr]\n"
                    "mcu i2c rs [adr] [cnt] - DP i2c read [cnt] bytes (8-bit) from [adr]\n"
                    "mcu i2c rs - DP i2c read 128 bytes (cnt: 0x80 ) from adr：0x0"},
    ExpectedCommand{"dump", 1, 1, "dump information operation", "dump vramfree - dump vram free node list\n"},
    ExpectedCommand{"quit/q", 15, 1, "Quit from command line", " "},
    ExpectedCommand{"help/h/?", 15, 1, "show all help information",
                    "help/h/? - show all cmd help information\n"
                    "help/h/? [cmd] - show specific cmd help information\n"
                    "\t[cmd]: all tovira_util_tool cmd"},
};
static_assert(kLanguage.size() == 102);

constexpr std::array<std::string_view, 4> kHiddenNames = {"query", "spi", "vlot", "clk"};

}  // namespace

std::vector<std::string> ExpectedCommand::aliases() const
{
    std::vector<std::string> words;
    std::istringstream stream{std::string(name)};
    for (std::string word; std::getline(stream, word, '/');) {
        words.push_back(word);
    }
    return words;
}

bool ExpectedCommand::hidden() const
{
    return std::find(kHiddenNames.begin(), kHiddenNames.end(), name) != kHiddenNames.end();
}

std::vector<ExpectedCommand> expectedCommands()
{
    return {kLanguage.begin(), kLanguage.end()};
}

std::string expectedHelpList()
{
    std::string list;
    for (const ExpectedCommand& command : expectedCommands()) {
        if (!command.hidden()) {
            list.append(command.name).append("\t- ").append(command.brief).append("\n");
        }
    }
    return list;
}

}  // namespace console_test
