// The commands that act on the console itself: help, quit, run and load.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "tovira_parse/command_table.h"
#include "tovira_parse/dispatcher.h"
#include "tovira_parse/files.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/line_editor.h"
#include "tovira_parse/text.h"
#include "vek.h"

namespace
{

constexpr DelimiterSet kPieceDelimiters(";\r\n");
constexpr int kDeepestLoad = 16;

int loadDepth = 0;

bool isHidden(const UtilCmd& cmd)
{
    return std::any_of(g_blacklist_cmd.begin(), g_blacklist_cmd.end(),
                       [&cmd](const char* hidden) { return strcmp(hidden, cmd.name) == 0; });
}

void listCommands()
{
    for (const UtilCmd& cmd : g_util_cmd) {
        if (!isHidden(cmd)) {
            printf("%s\t- %s\n", cmd.name, cmd.brief);
        }
    }
}

int explainCommand(char* word)
{
    lowerCase(word);
    const int row = findCmdRow(word, 0);
    if (row == kNoCmdRow) {
        return kStatusBadArgument;
    }
    const UtilCmd& cmd = g_util_cmd[row];
    if (hasAliases(cmd)) {
        printf("%s\t %s\n\t%s\n", word, cmd.brief, cmd.help);
    } else {
        printf("%s\t %s\n%s\n", cmd.name, cmd.brief, cmd.help);
    }
    return kStatusDone;
}

// The first piece decides how much of every piece is run: a longer one is cut to its length.
void runPieces(char* text)
{
    Tokens pieces{text};
    char* piece = pieces.next(kPieceDelimiters);
    const std::size_t length =
        piece == nullptr ? 0 : std::min(strlen(piece), static_cast<std::size_t>(kCmdLineSize - 1));
    memset(CmdLines, 0, kCmdLineSize);
    for (; piece != nullptr; piece = pieces.next(kPieceDelimiters)) {
        strncpy(CmdLines, piece, length);
        fputs(piece, stdout);
        fputs(":\n", stdout);
        parseAndRunCmd();
        memset(CmdLines, 0, length);
    }
}

}  // namespace

int doHelp(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    if (tokens.word() == nullptr) {
        return kStatusBadCommand;
    }
    char* const word = tokens.argument();
    if (word != nullptr) {
        return explainCommand(word);
    }
    listCommands();
    return kStatusDone;
}

int doQuit(char* /*cmdText*/, int /*repeat*/)
{
    return kStatusQuit;
}

int doRun(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    if (tokens.word() == nullptr) {
        return kStatusBadArgument;
    }
    return vekRunScript(tokens.argument());
}

int doLoad(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    if (tokens.word() == nullptr) {
        return kStatusBadArgument;
    }
    const char* const argument = tokens.argument();
    const char* const name = argument == nullptr ? "" : argument;
    if (loadDepth >= kDeepestLoad) {
        fprintf(stderr, "load: %s not loaded: files load one another more than %d deep\n", name, kDeepestLoad);
        return kStatusDone;
    }
    const FileText file = readWholeFile(name);
    // An end of the console rather than an error of the command: what was to follow the script must not run without it.
    // Inside another file it is passed over with its line, as the results of all commands of a file are.
    if (file.text == nullptr) {
        perror(file.outOfMemory ? "Malloc buf failed" : "Open file failed");
        return kStatusQuit;
    }
    ++loadDepth;
    runPieces(file.text.get());
    --loadDepth;
    return kStatusDone;
}
