/// The choice among the sub-commands of a command.
#ifndef TOVIRA_PARSE_SUB_COMMANDS_H
#define TOVIRA_PARSE_SUB_COMMANDS_H

#include <cstddef>
#include <string_view>

/// A sub-command by its keyword, in upper case, and what runs it on the command's remaining arguments.
template <typename Arguments>
struct SubCommand {
    std::string_view keyword;
    int (*run)(Arguments& arguments);
};

/// Runs the sub-command of a keyword and returns its status, or `otherwise` when there is no such sub-command.
template <typename Arguments, std::size_t Count>
int runSubCommand(const SubCommand<Arguments> (&subCommands)[Count], std::string_view keyword, Arguments& arguments,
                  int otherwise)
{
    for (const SubCommand<Arguments>& subCommand : subCommands) {
        if (subCommand.keyword == keyword) {
            return subCommand.run(arguments);
        }
    }
    return otherwise;
}

#endif
