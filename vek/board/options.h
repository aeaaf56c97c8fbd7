#ifndef VEK_BOARD_OPTIONS_H
#define VEK_BOARD_OPTIONS_H

#include <cstdio>

namespace vek
{

/// What the board program is to do.
struct BoardOptions {
    enum class Action {
        kServe,
        kHelp,
        kRefuse,  ///< The command line is wrong.
        kFail,    ///< The cards cannot be had, and the reason has been printed.
    };

    Action action = Action::kServe;
    int card = 0;               ///< Index of a simulated card.
    const char* tty = nullptr;  ///< Device of a real line; null for a pseudo-terminal.
    int baudRate = 9600;        ///< Of the real line.
    bool once = false;          ///< Ends when the line hangs up.
};

/// Reads the command line. A mistake is reported on standard error.
BoardOptions parseBoardOptions(int argc, char** argv);

void printBoardUsage(std::FILE* out, const char* program);

}  // namespace vek

#endif
