/**
 * @file expected_commands.h
 * The command language as it has to be, written down a second time: a row that is moved or changed by mistake shows as
 * a difference.
 */
#ifndef EXPECTED_COMMANDS_H
#define EXPECTED_COMMANDS_H

#include <string>
#include <string_view>
#include <vector>

namespace console_test
{

struct ExpectedCommand {
    std::string_view name; /**< all aliases, '/' between them */
    unsigned int modes;
    int repeat;
    std::string_view brief;
    std::string_view help;

    std::vector<std::string> aliases() const;
    bool hasAliases() const { return name.find('/') != std::string_view::npos; }
    /** Whether the full help list leaves it out. */
    bool hidden() const;
};

/** The rows of the whole language, in the order that they have to stand in. */
std::vector<ExpectedCommand> expectedCommands();

/** What `help` prints. */
std::string expectedHelpList();

}  // namespace console_test

#endif
