/// The program's command-line options.
#ifndef TOVIRA_PARSE_OPTIONS_H
#define TOVIRA_PARSE_OPTIONS_H

#include <cstdint>

/// Size of the `--cmd` text with its terminating NUL.
inline constexpr int kCommandTextSize = 256;

/// What the options decide about the run.
struct StartOptions {
    char commandText[kCommandTextSize];  ///< the text given with `--cmd`
    std::int32_t openResult;             ///< 0 = no access path has been opened yet
    std::int32_t interactive;            ///< 1 = run the console, 0 = run commandText once
};

/// The card whose driver device is opened, 0 to 3.
extern std::int32_t set_card;

/// Handles the options one by one in command-line order: opens the path of `--mem` or `--tty` at once, prints the usage
/// text for `--help`. A bad option, a failed open or `--help` ends the program.
void options_parse_args(StartOptions* options, int argc, char** argv);

/// `--cmd`: keeps the text to be run once. A text longer than 256 characters ends the program with status 1; one of
/// exactly 256 characters, which leaves no place for its terminator, aborts it.
void doParseCmd(StartOptions* options, const char* text);

/// `--mem reg_start,reg_size,vram_start,vram_size` (hexadecimal): opens the mapping of physical memory when at least
/// one of the two windows is complete, and leaves the open result alone otherwise.
void doParseMemOpen(StartOptions* options, const char* progName, const char* text);

/// `--tty name,rate`: opens the serial line /dev/name, at 9600 when no rate is given.
void doParseSerialOpen(StartOptions* options, const char* progName, const char* text);

/// `--help`: prints the usage text and ends the program with status 0.
[[noreturn]] void doParseHelp(const char* progName);

/// Chooses the interactive console, which is also what a run without `--cmd` does.
void doParseInteractive(StartOptions* options);

/// Prints the usage text.
void progHelp(const char* progName);

#endif
