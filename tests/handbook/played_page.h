/**
 * @file played_page.h
 * Plays the console excerpts of a Markdown page with the finished program, and renders a session as a picture.
 *
 * An excerpt is a fenced block whose info string begins with "console". A line in it that begins with "$ " is a shell
 * command, run in a folder of the page's own with the build folder in front of PATH. The command "tovira_util_tool",
 * with variables before it and options behind it, but without --cmd, is a session at a terminal: the lines of this
 * block and of those after it that begin with ">" are typed, until the program ends. All other lines are output.
 *
 * "./run" at the start of a shell command stands for the program; the script's own messages are left out.
 *
 * In a block with the info string "console digits" a digit stands for any digit, for values that differ from run to
 * run.
 */
#ifndef PLAYED_PAGE_H
#define PLAYED_PAGE_H

#include <string>
#include <vector>

namespace handbook
{

/** The page with the output that its excerpts have when they are run. `programs` is the folder of the programs. Throws
    std::runtime_error when a session does not go as the page has it begin, go on or end. */
std::string playedPage(const std::string& page, const std::string& programs);

/** The lines of all excerpts of a page, in order. */
std::vector<std::string> excerptLines(const std::string& page);

/** An SVG picture of lines of text as a terminal shows them, readable on light and dark pages. */
std::string terminalPicture(const std::vector<std::string>& lines, const std::string& title);

}  // namespace handbook

#endif
