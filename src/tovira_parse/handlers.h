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

#endif
