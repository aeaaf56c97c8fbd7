/// The command handlers, by family. All follow the convention of CmdHandler in util_cmd.h.
#ifndef TOVIRA_PARSE_HANDLERS_H
#define TOVIRA_PARSE_HANDLERS_H

// Console: help, quit, run and load.

/// `help`, `help <cmd>`: lists the commands or explains one.
int doHelp(char* cmdText, int repeat);
/// `quit`: ends the console.
int doQuit(char* cmdText, int repeat);
/// `run <script>`: hands a script to the device-access library, whose result is the status.
int doRun(char* cmdText, int repeat);
/// `load <fname>`: runs the commands of a text file.
int doLoad(char* cmdText, int repeat);

// Memory: one engine (memory/memory_engine.h), one description a family.

/// `rrb` to `rwq`: one item of the register region.
int doReg(char* cmdText, int repeat);
/// `rrbs` to `rwqs`: a run of items of the register region.
int doMultReg(char* cmdText, int repeat);
/// `vrb` to `vwq`: one item of video memory.
int doVram(char* cmdText, int repeat);
/// `vrbs` to `vwqs`: a run of items of video memory.
int doMultVram(char* cmdText, int repeat);
/// `krb` to `kwq`: one item at a kernel virtual address of the host.
int doKmem(char* cmdText, int repeat);
/// `krbs` to `kwqs`: a run of items at kernel virtual addresses.
int doMultKmem(char* cmdText, int repeat);
/// `arb` to `awq`: one item on the card's AMBA bus.
int doAmba(char* cmdText, int repeat);
/// `arbs` to `awqs`: a run of items on the AMBA bus.
int doMultAmba(char* cmdText, int repeat);
/// `crb`, `cwb` and `crbs`: byte registers of display controller 0.
int doCrtcReg(char* cmdText, int repeat);
/// `pci`: one 32-bit word of the card's PCI configuration space.
int doPCI(char* cmdText, int repeat);

// Display and bus interfaces.

/// `i2c`: bytes and blocks of one device on one of the card's I2C buses.
int doI2c(char* cmdText, int repeat);
/// `ddc`: a monitor's EDID over a DDC channel, to the screen and into a file.
int doDDC(char* cmdText, int repeat);
/// `edid`: the EDID of a file, or the one read last.
int doEdid(char* cmdText, int repeat);
/// `hdmi`: PHY, hot-plug state, DDC, EDID and mode of an HDMI output.
int doHdmi(char* cmdText, int repeat);

/// `dp`: controller, AUX channel, PHY, EDID and mode of a DisplayPort output.
int doDp(char* cmdText, int repeat);
/// `edp`: the backlight of the eDP panel.
int doEdp(char* cmdText, int repeat);
/// `vga`: gains of the VGA output, and the mode of a channel.
int doVga(char* cmdText, int repeat);
/// `dvo`: the mode of a DVO channel.
int doDvo(char* cmdText, int repeat);
/// `crtc`: output routing, gamma, and the mode of a display controller.
int doCrtc(char* cmdText, int repeat);
/// `zv`: the zoom-video capture ports.
int doZV(char* cmdText, int repeat);
/// `spi`: the card's SPI flash.
int doSpi(char* cmdText, int repeat);
/// `mcu`: AUX and I2C-over-AUX transfers that the board's microcontroller makes.
int doMcu(char* cmdText, int repeat);

// Sensors, power and clocks of the board.

/// `temp`: die temperatures.
int doTemp(char* cmdText, int repeat);
/// `volt`, `vlot`: supply voltages.
int doVolt(char* cmdText, int repeat);
/// `process`: process monitors.
int doProcess(char* cmdText, int repeat);
/// `ltc2990`: currents or voltages of an LTC2990.
int doLtc2990(char* cmdText, int repeat);
/// `ltc2991`: currents or voltages of an LTC2991.
int doLtc2991(char* cmdText, int repeat);
/// `ina3221`: voltages and currents of an INA3221.
int doIna3221(char* cmdText, int repeat);
/// `power`: reads or sets the power state.
int doPower(char* cmdText, int repeat);
/// `fan`: sets the fan's duty or gives it back to the regulation.
int doFan(char* cmdText, int repeat);
/// `thermal`: feeds a simulated temperature to the fan's regulation.
int doThermal(char* cmdText, int repeat);
/// `func`: hands the whole text to the library's feature switches.
int doFunction(char* cmdText, int repeat);
/// `clk`: frequencies of the clock domains, bypass and off switches.
int doClk(char* cmdText, int repeat);

// Information and tracing.

/// `version`, `ver`, `info`: the driver's version, and the live display of the use of video memory.
int doVer(char* cmdText, int repeat);
/// `query`: reports of the kernel driver.
int doQuery(char* cmdText, int repeat);
/// `card`: shows or changes the selected card.
int doCard(char* cmdText, int repeat);
/// `dump`: lists that the driver prints. The library's result is the status.
int doDump(char* cmdText, int repeat);
/// `monitor`: the counters of AXI transactions.
int doMonitor(char* cmdText, int repeat);

#endif
