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
    {"zv", doZV, kEveryPath, 0, "Operate of zv",
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
    {"ddc", doDDC, kDriverOnly, 0, "hdmi ddc get edid",
     "\tddc [ch] [fname]\n"
     "\t[ch]: ddc channel, 0, 1, 2 or 3\n"
     "\t[fname]: filename to save data (optional)"},
    {"pci", doPCI, kDriverOnly, 0, "read or write pci configure register",
     "\tpci [adr] [val]\n"
     "\t[adr]: the address of read on pci configure register\n"
     "\t[val]: trite the value on kernel virtual address"},
    {"temp", doTemp, kEveryPath, 0, "read two sensor temperature",
     "temp [sensor_num]\n"
     "\t [sensor]: the temp cmd will choose which sensor temperature to show (1 or 2)\n"
     "\t if not [sensor]: the temd cmd will show both two sensor temperature\n"},
    {"volt", doVolt, kEveryPath, 0, "read two sensor voltage",
     "volt [sensor_num]\n"
     "\t [sensor]: the temp cmd will choose which sensor voltage to show (1 or 2)\n"
     "\t if not [sensor]: the temd cmd will show both two sensor voltage\n"},
    {"vlot", doVolt, kEveryPath, 0, "read two sensor voltage",
     "vlot [sensor_num]\n"
     "\t [sensor]: the temp cmd will choose which sensor voltage to show (1 or 2)\n"
     "\t if not [sensor]: the temd cmd will show both two sensor voltage\n"},
    {"process", doProcess, kEveryPath, 0, "read sensor process", " "},
    {"version/ver", doVer, kDriverOnly, 0, "return vekcore version", " "},
    {"info", doVer, kDriverOnly, 0, "show the information of GPU states", " "},
    {"run/r", doRun, kAlways, 0, "Run the script", " "},
    {"load", doLoad, kAlways, 0, "load the multi-command for each line on the file",
     "load [fname]\n"
     "\t [fname] the file of preserved multi command"},
    {"spi", doSpi, kEveryPath, 0, "SPI flash operation include read erase and program",
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
    {"vga", doVga, kEveryPath, 1, "VGA interface operation",
     "vga [channel] r [gain] - set vga red channel gain\n"
     "vga [channel] g [gain] - set vga green channel gain\n"
     "vga [channel] b [gain] - set vga blue channel gain\n"
     "vga [channel] c [red_gain] [green_gain] [blue_gain] - set vga all color channel gain\n"
     "vga [channel] mode - get vga display mode"},
    {"dvo", doDvo, kEveryPath, 1, "DVO interface operation", "dvo [channel] mode - read dvo display mode"},
    {"dp", doDp, kEveryPath, 1, "DP interface operation",
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
    {"edp", doEdp, kEveryPath, 1, "eDP interface operation",
     "edp pwm [hz] - edp set pwm hz from 200 to 1M, usually 1K to 2K\n"
     "edp light [percent] - edp set light percent from 0 to 0x64\n"
     "edp pwmen - edp change pwm hz and duty enable, after wirte new value"},
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
    {"query", doQuery, kEveryPath, 1, "get hardware info",
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
    {"monitor", doMonitor, kEveryPath, 0,
     "Count the transaction status of the axi interface of the master device within a certain period of time",
     "monitor start/s - begin the transaction status and send its data to a file(Input 'd' to done the transaction)\n"
     "monitor final/f - final the transaction status\n"
     "monitor clear/c - clear the count transaction status in the last round\n"
     "monitor cycle/t - set log timer\n"},
    {"fan", doFan, kEveryPath, 0, "adjust the fan speed by input pwm, percent from 0 to 100",
     "fan pwm - change the fan speed by manual pwm(0-100)\n"
     "fan auto - close manual control,recover the kernel temperature adjustment\n"
     "\t[pwm]: the fan speed pwm from 0 to 100"},
    {"thermal", doThermal, kEveryPath, 1, "debug for fan control strategy",
     "thermal temp - simulation temp for GPU, eg: thermal 50000\n"
     "thermal q/quit - close debug\n"},
    {"crtc", doCrtc, kEveryPath, 1, "Crtc information",
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
    {"card", doCard, kEveryPath, 1, "set Card count", "card [ID] - set gpu card ID"},
    {"edid", doEdid, kEveryPath, 1, "parse edid block",
     "edid parse (path) - parse edid file in the specified path. If path is not specified, parse the last result.\n"},
    {"func", doFunction, kEveryPath, 1, "set Function",
     "func [options]\n"
     "Function list:\n"
     "func 3D: 1.RVT_GL_TRACE, 2.RVT_GLX_TRACE, 3.RVT_ES_TRACE 4.RVT_EGL_TRACE\n"
     "func Texture\n"
     "func Mgpu: 1.Combined, 2.Independent for n, 3.Balance\n"
     "func On: View open function\n"
     "func close: Close all function\n"},
    {"clk", doClk, kEveryPath, 1, "set QZ200 mode clk freq",
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
    {"ltc2990", doLtc2990, kEveryPath, 1, "get voltage or current from LTC2990 chip by I2C",
     "ltc2990 <i2c_channel> <addr1:0> <mode> [<Rsense0>] [<Rsense1>]\n"
     "\t<i2c_channel>: i2c channel for LTC2990\n"
     "\t<addr1:0>: i2c target address. 0: 0x98; 1: 0x9A; 2: 0x9C; 3: 0x9E\n"
     "\t<mode>: mode for LTC2990. 6: measure Current1((V1-V2)/Rsense1) and Current2((V3-V4)/Rsense2);\n"
     "\t\t 7: measure voltage V1, V2, V3, V4\n"
     "\t[<Rsense1>]: Rsense1 * 1000 only for Current1. Such as 3 means 0.003 Ohm\n"
     "\t[<Rsense2>]: Rsense2 * 1000 only for Current2. Such as 3 means 0.003 Ohm\n"},
    {"ina3221", doIna3221, kEveryPath, 1, "get voltage or current from INA3221 chip by I2C",
     "ina3221 <i2c_channel> <Rsense1>  <Rsense2>\n"
     "\t<i2c_channel>: i2c channel for INA3221\n"
     "\t<Rsense1>: Rsense1 * 1000 only for Current1. Such as 3 means 0.003 Ohm\n"
     "\t<Rsense2>: Rsense2 * 1000 only for Current2. Such as 3 means 0.003 Ohm\n"},
    {"ltc2991", doLtc2991, kEveryPath, 1, "get voltage or current from LTC2991 chip by I2C",
     "ltc2991 <i2c_channel> <addr7:0> <mode> [<Rsense1>] [<Rsense2>] [<Rsense3>] [<Rsense4>]\n"
     "\t<i2c_channel>: i2c channel for LTC2991\n"
     "\t<addr7:0>: using 5 . i2c target address. 0: 0x90; 1: 0x92; 2: 0x94; 3: 0x96; 4: 0x98; 5:0x9A; 6:0x9C; 7:0x9E\n"
     "\t<mode>: mode for LTC2991. 1: measure Current1((V1-V2)/Rsense1) and Current2((V3-V4)/Rsense2);\n"
     "\t\t 0: measure voltage V1, V2, V3, V4, V5, V6, V7, V8\n"
     "\t[<Rsense1>]: Rsense1 * 1000 only for Current1. Such as 3 means 0.003 Ohm\n"
     "\t[<Rsense2>]: Rsense2 * 1000 only for Current2. Such as 3 means 0.003 Ohm\n"
     "\t[<Rsense3>]: Rsense3 * 1000 only for Current2. Such as 3 means 0.003 Ohm\n"
     "\t[<Rsense4>]: Rsense4 * 1000 only for Current2. Such as 3 means 0.003 Ohm\n"},
    {"power", doPower, kDriverOnly, 0, "get or set power state",
     "power [state]\n"
     "\t[state]: if [state] is valid, set power state, otherwise get power state.\n"
     "\t\t0: power performance; 1: power save; 2: power standby; others: invalid\n"},
    {"mcu", doMcu, kEveryPath, 1, "Mcu aux operation",
     "mcu aux r  [adr] - DP aux read data (8-bit) from [adr]\n"
     "mcu aux w  [adr] [val] - DP aux write [val] (8-bit) to [adr]\n"
     "mcu aux rs [adr] [cnt] - DP aux read [cnt] bytes (8-bit) from [adr]\n"
     "mcu aux ws [adr] [cnt] [val]- DP aux write [cnt] bytes (8-bit) [val] to [adr]\n"
     "mcu i2c r  [adr] - DP i2c read data (8-bit) from [adr]\n"
     "mcu i2c w  [adr] - DP i2c write data (8-bit) from [adr]\n"
     "mcu i2c rs [adr] [cnt] - DP i2c read [cnt] bytes (8-bit) from [adr]\n"
     "mcu i2c rs - DP i2c read 128 bytes (cnt: 0x80 ) from adr：0x0"},
    {"dump", doDump, kDriverOnly, 1, "dump information operation", "dump vramfree - dump vram free node list\n"},
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
constexpr auto kNamedRows = []() {
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
