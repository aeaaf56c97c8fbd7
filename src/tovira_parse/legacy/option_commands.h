/// A front end of its own: one operation, given as a subcommand and option letters in the manner of getopt. Nothing of
/// the console calls it, and it needs nothing of the console; a program hands it its arguments once a card is open.
#ifndef TOVIRA_PARSE_LEGACY_OPTION_COMMANDS_H
#define TOVIRA_PARSE_LEGACY_OPTION_COMMANDS_H

/// Performs the operation that the words ask for, argv[1] being the subcommand: reg, vram, i2c, zv, run or ver. Errors
/// print a line, some of them the usage as well. getopt's state is set up afresh by every call, and the words may come
/// out in another order, as getopt leaves them.
void parseArg(int argc, char** argv);

/// Prints the usage.
void optHelp(const char* programName);

#endif
