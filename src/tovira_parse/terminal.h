/// Single keys from the terminal on standard input.
#ifndef TOVIRA_PARSE_TERMINAL_H
#define TOVIRA_PARSE_TERMINAL_H

/// Saves the settings of the terminal on standard input and puts it into raw mode. False, with the settings as they
/// were, when standard input is no terminal or a terminal call fails. Until leaveRawTerminal, a signal that ends or
/// suspends the program (those of users, terminals, pipes, timers and limits) puts the settings back first; a resumed
/// program goes on in raw mode.
bool enterRawTerminal();

/// Puts back what enterRawTerminal saved. False when the terminal call fails.
bool leaveRawTerminal();

/// Makes what was printed so far visible when standard output is a terminal; a pipe or a file stays fully buffered.
void flushTerminalOutput();

/// Whether a byte of standard input, or its end, can be read without waiting for more than a moment.
bool keyIsWaiting();

/// Shows what was printed so far, then reads one byte from standard input with the terminal in raw mode for just that
/// time. Returns the byte, or -1 when a terminal call fails or standard input has ended.
int my_getch();

#endif
