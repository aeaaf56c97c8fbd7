/// What man pages and shell completion say about the commands, out of the console's own table.
#ifndef MAN_COMMAND_TEXTS_H
#define MAN_COMMAND_TEXTS_H

#include <string>

/// The reference of all commands in the table's order, in man macros: names, brief, access paths, whether an empty line
/// repeats it, and the usage text as the console prints it.
std::string manOfCommands();

/// Every name and alias once, in alphabetical order, a line each.
std::string commandNames();

/// Every name and alias with its brief, as words of a zsh array: 'name:brief', a line each.
std::string zshCommandDescriptions();

#endif
