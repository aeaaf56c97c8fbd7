/// Cuts lines into commands and runs them.
#ifndef TOVIRA_PARSE_DISPATCHER_H
#define TOVIRA_PARSE_DISPATCHER_H

/// The text from `*cursor` up to the next separator, which becomes a NUL while the cursor moves past it. Without a
/// separator the whole rest, and the cursor then points at its terminating NUL.
char* getCurCmdLine(char** cursor, char separator);

/// Runs the line in CmdLines, its commands separated by ';'. An empty line runs the last command again when its row
/// allows that. Returns 1 when the console is to end; 0 when the line is done or was left without a message; -1, -2 or
/// -3 when it was left with the message for that status.
int parseAndRunCmd();

/// Runs the commands of a text once, as parseAndRunCmd does, but leaves the remembered line and command alone and ends
/// at the first empty command. The text is changed.
int parseAndRunOpt(char* text);

#endif
