/// Single keys from the terminal on standard input, and what signals leave behind on a terminal.
#ifndef TOVIRA_PARSE_TERMINAL_H
#define TOVIRA_PARSE_TERMINAL_H

#include <csignal>

/// What my_getch returns instead of a key when the program was stopped meanwhile and goes on.
inline constexpr int kKeyAfterStop = -2;

/// Saves the settings of the terminal on standard input and puts it into raw mode. False, with the settings as they
/// were, when standard input is no terminal or a terminal call fails. A process in the background is stopped until it
/// is in the foreground. Until leaveRawTerminal, every signal that ends or suspends the program by default puts the
/// settings back first; a resumed program goes on in raw mode.
bool enterRawTerminal();

/// Puts back what enterRawTerminal saved. False when the terminal call fails.
bool leaveRawTerminal();

/// Whether a terminal is this process group's. One that controls no jobs of this session is everybody's.
bool isForegroundOf(int descriptor);

/// From now on every signal that ends or suspends the program by default takes a progress line away (progress.h) and
/// gives a raw terminal back first. For the console's own thread.
void guardTerminalSignals();

/// The same for bus errors alone, to be called before a card is opened: a library that maps files handles those, and
/// leaves to whoever came before it what is not of its mappings.
void guardBusErrors();

/// Makes what was printed so far visible when standard output is a terminal; a pipe or a file stays fully buffered.
void flushTerminalOutput();

/// Whether a byte of standard input, or its end, can be read without waiting for more than a moment.
bool keyIsWaiting();

/// Reads one byte of standard input, or EOF when it has ended or fails. A read that a signal interrupts, or that does
/// not wait, is made again.
int readKey();

/// Whether standard input has just failed only because a signal interrupted the read, or because nothing had come yet
/// where a read does not wait; returns when there is something then.
bool readIsToBeRepeated();

/// Shows what was printed so far, then reads one byte from standard input with the terminal in raw mode for just that
/// time. Returns the byte, or -1 when a terminal call fails or standard input has ended, or kKeyAfterStop, with the
/// terminal's line to be drawn anew and the key still to come.
int my_getch();

/// Holds back the signals that end or suspend the program, but for those of faults, in this thread and in those that it
/// creates from now on: the console's own thread is the one that knows the state of the terminal. Returns the signals
/// that were held back before, for releaseSignals.
sigset_t holdBackSignals();

/// Lets signals come again in this thread, but for those that were held back before.
void releaseSignals(const sigset_t& before);

#endif
