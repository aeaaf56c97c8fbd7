#include "declared_functions.h"

#include <cctype>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace
{

/** The header's declarations only: neither preprocessor lines nor comments, which name functions too. */
std::string declarationsOf(std::istream& header)
{
    std::string code;
    for (std::string line; std::getline(header, line);) {
        if (!line.starts_with('#')) {
            code += line + "\n";
        }
    }
    for (std::size_t start = code.find("/*"); start != std::string::npos; start = code.find("/*", start)) {
        const std::size_t end = code.find("*/", start);
        if (end == std::string::npos) {
            throw std::runtime_error("a comment in " VEK_HEADER " does not end");
        }
        code.erase(start, end + 2 - start);
    }
    return code;
}

/** The identifier that ends just before a position. */
std::string identifierBefore(std::string_view code, std::size_t end)
{
    std::size_t start = end;
    while (start > 0 && (std::isalnum(static_cast<unsigned char>(code[start - 1])) != 0 || code[start - 1] == '_')) {
        --start;
    }
    return std::string(code.substr(start, end - start));
}

}  // namespace

std::set<std::string> declaredFunctions()
{
    std::ifstream header(VEK_HEADER);
    if (!header) {
        throw std::runtime_error("cannot read " VEK_HEADER);
    }
    const std::string code = declarationsOf(header);
    std::set<std::string> names;
    // Only function declarations have parentheses.
    for (std::size_t at = code.find('('); at != std::string::npos; at = code.find('(', at + 1)) {
        names.insert(identifierBefore(code, at));
    }
    return names;
}
