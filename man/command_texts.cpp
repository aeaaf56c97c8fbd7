#include "command_texts.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string_view>
#include <vector>

#include "roff.h"
#include "tovira_parse/command_table.h"

namespace
{

std::vector<std::string_view> namesOf(const UtilCmd& cmd)
{
    std::vector<std::string_view> names;
    for (std::string_view rest = cmd.name; !rest.empty();) {
        const std::string_view name = rest.substr(0, rest.find('/'));
        names.push_back(name);
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    }
    return names;
}

bool isHidden(const UtilCmd& cmd)
{
    return std::any_of(g_blacklist_cmd.begin(), g_blacklist_cmd.end(),
                       [&cmd](const char* hidden) { return std::strcmp(hidden, cmd.name) == 0; });
}

std::string pathsOf(const UtilCmd& cmd)
{
    if ((cmd.modes & kEveryPath) == kEveryPath) {
        return "every access path";
    }
    static constexpr std::array<const char*, 3> kPaths = {"the driver device", "/dev/mem", "the serial line"};
    std::string paths;
    for (std::size_t mode = 0; mode < kPaths.size(); ++mode) {
        if ((cmd.modes >> mode & 1U) != 0) {
            (paths += paths.empty() ? "" : ", ") += kPaths[mode];
        }
    }
    return paths + " only";
}

std::string headingOf(const UtilCmd& cmd)
{
    std::string heading;
    for (const std::string_view name : namesOf(cmd)) {
        (heading += heading.empty() ? "" : ", ") += roffText(name);
    }
    return heading;
}

// Single quotes cannot stand in a quoted word of the shell, and the first colon ends the name.
std::string zshWord(std::string_view name, std::string_view brief)
{
    std::string word = "'" + std::string(name) + ':';
    for (const char letter : brief) {
        word += letter == '\'' ? "'\\''" : std::string(1, letter);
    }
    return word + '\'';
}

// The first row that answers to a name is the one that its help explains.
std::map<std::string_view, std::string_view> briefsByName()
{
    std::map<std::string_view, std::string_view> briefs;
    for (const UtilCmd& cmd : g_util_cmd) {
        for (const std::string_view name : namesOf(cmd)) {
            briefs.emplace(name, cmd.brief);
        }
    }
    return briefs;
}

}  // namespace

std::string manOfCommands()
{
    std::string page;
    for (const UtilCmd& cmd : g_util_cmd) {
        page += ".SS " + headingOf(cmd) + '\n' + roffText(cmd.brief) + '\n';
        page += ".PP\nOn " + roffText(pathsOf(cmd));
        page += cmd.repeat == 1 ? "; an empty line repeats it" : "";
        page += isHidden(cmd) ? "; not in the list of \\fBhelp\\fR" : "";
        page += ".\n";
        if (std::string_view(cmd.help) != " ") {
            page += ".PP\n.nf\n" + roffLines(cmd.help) + ".fi\n";
        }
    }
    return page;
}

std::string commandNames()
{
    std::string names;
    for (const auto& [name, brief] : briefsByName()) {
        (names += name) += '\n';
    }
    return names;
}

std::string zshCommandDescriptions()
{
    std::string words;
    for (const auto& [name, brief] : briefsByName()) {
        words += zshWord(name, brief) + '\n';
    }
    return words;
}
