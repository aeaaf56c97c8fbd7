/// The command row of the console and the convention that every command handler follows.
#ifndef TOVIRA_UTIL_CMD_H
#define TOVIRA_UTIL_CMD_H

#include <cstdint>

/// What a handler's status makes the dispatcher do. Any other positive status stops the line without ending the
/// console, any status below kStatusModeRefused stops it without a message.
enum HandlerStatus : int {
    kStatusDone = 0,          ///< go on with the next command of the line
    kStatusQuit = 1,          ///< end the console
    kStatusBadCommand = -1,   ///< a hard failure; the dispatcher prints its "command code error" line
    kStatusBadArgument = -2,  ///< missing or malformed arguments; the dispatcher prints its "Invalid argument" line
    kStatusModeRefused = -3,  ///< the row may not run over the open access path
};

/// A command handler. `cmdText` is the whole text of one command, command word first, as it was typed; the handler may
/// change it. `repeat` is 0 for a typed command and 1 when an empty line runs the last one again. Returns a
/// HandlerStatus or any other integer.
using CmdHandler = int (*)(char* cmdText, int repeat);

/// Masks of the access modes in which a row may run: bit `1 << mode` of get_s_type()'s 0 (driver device), 1 (/dev/mem)
/// and 2 (serial line). Bit 3 belongs to no mode; only the rows that act on the console itself have it.
enum CmdModes : std::uint32_t {
    kDriverOnly = 1,
    kEveryPath = 7,
    kAlways = 15,
};

/// One row of the command table.
struct UtilCmd {
    const char* name;     ///< the command word in lower case, at most 15 characters; aliases separated by '/'
    CmdHandler handler;   ///< runs the command
    std::uint32_t modes;  ///< CmdModes
    std::int32_t repeat;  ///< 1 = an empty input line runs this command again, 0 = it does not
    const char* brief;    ///< one-line description for the full help list
    const char* help;     ///< usage text for `help <cmd>`
};

#endif
