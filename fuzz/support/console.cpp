#include "support/console.h"

#include <algorithm>

#include "support/require.h"
#include "support/sandbox.h"
#include "tovira_parse/dispatcher.h"
#include "tovira_parse/line_editor.h"
#include "util_cmd.h"

namespace fuzz
{
namespace
{

// A typed line has one of the dispatcher's own statuses; an empty one hands on what the repeated command says.
bool isStatusOfLine(int status, bool empty)
{
    return empty || (status >= kStatusModeRefused && status <= kStatusQuit);
}

int runLine(std::string_view line)
{
    const std::size_t length = std::min(line.size(), static_cast<std::size_t>(kCmdLineSize - 1));
    std::copy_n(line.begin(), length, CmdLines);
    CmdLines[length] = '\0';
    const int status = parseAndRunCmd();
    require(isStatusOfLine(status, length == 0));
    require(std::find(CmdLines, CmdLines + kCmdLineSize, '\0') != CmdLines + kCmdLineSize);
    require(Sandbox::terminalIsAsBefore());
    return status;
}

}  // namespace

TextAndAnswers splitInput(const std::uint8_t* data, std::size_t size)
{
    const std::uint8_t* const end = std::find(data, data + size, std::uint8_t{0});
    const auto length = static_cast<std::size_t>(end - data);
    TextAndAnswers parts{.text = {reinterpret_cast<const char*>(data), length}, .answers = {}};
    if (length < size) {
        parts.answers = std::span(data, size).subspan(length + 1);
    }
    return parts;
}

void runLines(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        if (runLine(text.substr(0, end)) == kStatusQuit || end == std::string_view::npos) {
            return;
        }
        text.remove_prefix(end + 1);
    }
}

}  // namespace fuzz
