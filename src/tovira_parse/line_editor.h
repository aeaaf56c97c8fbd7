/// The console's line editor: one line of input with cursor keys and a history of the last 128 lines.
#ifndef TOVIRA_PARSE_LINE_EDITOR_H
#define TOVIRA_PARSE_LINE_EDITOR_H

#include <cstdint>

/// Size of the input line with its terminating NUL.
inline constexpr int kCmdLineSize = 256;

/// The current input line, NUL-terminated: filled by getCmdLine and by the `load` command, run by parseAndRunCmd.
extern char CmdLines[kCmdLineSize];

/// Prints the prompt and edits a line until Enter. Returns 0 with the line in CmdLines, or 1 when the user pressed
/// Ctrl-C or when standard input gave nothing for a line's worth of reads in a row; the console then ends.
///
/// Keys, by the bytes they send:
///   CR, LF          end the line
///   Ctrl-C          end the console
///   ESC [ A         an older line            ESC [ B         a newer line
///   ESC [ C         one to the right         ESC [ D         one to the left
///   ESC [ 1 ~       Home                     ESC [ 4 ~       End
///   BS, DEL         delete before the cursor
/// Any other byte is inserted at the cursor. A line holds at most 255 characters.
int getCmdLine();

#endif
