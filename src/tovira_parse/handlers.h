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

#endif
