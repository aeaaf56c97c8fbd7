// Writes what the programs print now into pages: `update_pages PROGRAMS PAGE...`, and the picture of a session:
// `update_pages --picture PROGRAMS PAGE PICTURE`.

#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "played_page.h"

namespace
{

std::string contents(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const std::string& path, const std::string& text)
{
    std::ofstream stream(path, std::ios::binary);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    stream << text;
}

std::string update(const std::string& page, const std::string& programs)
{
    std::string played = handbook::playedPage(contents(page), programs);
    write(page, played);
    return played;
}

int updateAll(const std::vector<std::string>& arguments)
{
    if (arguments.size() == 4 && arguments[0] == "--picture") {
        const std::string played = update(arguments[2], arguments[1]);
        write(arguments[3],
              handbook::terminalPicture(handbook::excerptLines(played), "A session with tovira_util_tool"));
        return 0;
    }
    if (arguments.size() < 2) {
        std::cerr << "usage: update_pages PROGRAMS PAGE...\n       update_pages --picture PROGRAMS PAGE PICTURE\n";
        return 2;
    }
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        update(arguments[i], arguments[0]);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return updateAll({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
