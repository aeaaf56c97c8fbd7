#include "tovira_parse/dispatcher.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "tovira_parse/command_table.h"
#include "tovira_parse/line_editor.h"
#include "tovira_parse/text.h"
#include "vek.h"

namespace
{

constexpr char kCommandSeparator = ';';
constexpr int kNoRow = -1;

// The last non-empty line given to parseAndRunCmd, and the row whose handler it called last.
char lastCmdLines[kCmdLineSize];
int last_index = kNoRow;

enum class RunKind { kConsole, kOneShot };

// Without an open path the library knows no mode; the rows that act on the console alone run all the same.
std::uint32_t currentModeBit()
{
    constexpr int kBitsOfMask = 32;
    const int mode = get_s_type();
    return mode >= 0 && mode < kBitsOfMask ? 1U << static_cast<unsigned>(mode) : kAlways & ~kEveryPath;
}

void copyCut(char* to, const char* from)
{
    const std::size_t length = std::min(strlen(from), static_cast<std::size_t>(kCmdLineSize - 1));
    memcpy(to, from, length);
    to[length] = '\0';
}

// Calls every allowed row that answers to the word, in table order; the last status set is the command's.
int callRows(std::string_view word, char* cmdText, std::uint32_t modeBit, RunKind kind)
{
    int status = kStatusDone;
    for (int row = findCmdRow(word, 0); row != kNoCmdRow; row = findCmdRow(word, row + 1)) {
        const UtilCmd& cmd = g_util_cmd[row];
        if ((cmd.modes & modeBit) == 0) {
            status = kStatusModeRefused;
            continue;
        }
        if (kind == RunKind::kConsole) {
            last_index = row;
        }
        status = cmd.handler(cmdText, 0);
    }
    return status;
}

int runCommand(char* cmdText, std::uint32_t modeBit, RunKind kind)
{
    char work[kCmdLineSize];
    copyCut(work, cmdText);
    char* const word = Tokens{work}.word();
    if (word == nullptr) {
        return kStatusDone;
    }
    lowerCase(word);
    return callRows(word, cmdText, modeBit, kind);
}

// What the entry points return for a status that has ended the line.
int reportStatus(int status)
{
    switch (status) {
        case kStatusQuit:
            return kStatusQuit;
        case kStatusBadCommand:
            puts("command code error: the cmd input code is incorrect");
            return status;
        case kStatusBadArgument:
            puts("Invalid argument. Use help or ? for command info");
            return status;
        case kStatusModeRefused:
            puts("device error:the cmd does not support the visit mode");
            return status;
        default:
            return kStatusDone;
    }
}

int runLine(char* line, std::uint32_t modeBit, RunKind kind)
{
    char* cursor = line;
    for (;;) {
        char* const command = getCurCmdLine(&cursor, kCommandSeparator);
        if (*command == '\0') {
            if (*cursor == '\0' || kind == RunKind::kOneShot) {
                return kStatusDone;
            }
            continue;
        }
        const int status = runCommand(command, modeBit, kind);
        if (status != kStatusDone) {
            return reportStatus(status);
        }
    }
}

int repeatLastCommand()
{
    if (lastCmdLines[0] == '\0' || last_index < 0 || g_util_cmd[last_index].repeat != 1) {
        return kStatusDone;
    }
    copyCut(CmdLines, lastCmdLines);
    char line[kCmdLineSize];
    copyCut(line, lastCmdLines);
    char* cursor = line;
    return g_util_cmd[last_index].handler(getCurCmdLine(&cursor, kCommandSeparator), 1);
}

}  // namespace

char* getCurCmdLine(char** cursor, char separator)
{
    char* const command = *cursor;
    char* const end = strchr(command, separator);
    if (end == nullptr) {
        *cursor = command + strlen(command);
    } else {
        *end = '\0';
        *cursor = end + 1;
    }
    return command;
}

int parseAndRunCmd()
{
    const std::uint32_t modeBit = currentModeBit();
    if (CmdLines[0] == '\0') {
        return repeatLastCommand();
    }
    copyCut(lastCmdLines, CmdLines);
    // The line runs from a copy: a script that one of its commands loads runs through CmdLines itself.
    char line[kCmdLineSize];
    copyCut(line, CmdLines);
    return runLine(line, modeBit, RunKind::kConsole);
}

int parseAndRunOpt(char* text)
{
    return runLine(text, currentModeBit(), RunKind::kOneShot);
}
