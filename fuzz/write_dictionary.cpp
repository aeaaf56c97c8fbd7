// Writes the words of the command table to standard output, in the format of libFuzzer's dictionaries: the names of the
// commands, and what stands in their help texts, where the sub-commands are.

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>

#include "tovira_parse/command_table.h"

namespace
{

constexpr std::size_t kShortestWord = 2;
constexpr std::size_t kLongestWord = 15;

bool isWordCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

void addWords(std::set<std::string>& words, std::string_view text)
{
    while (!text.empty()) {
        const auto* const end = std::find_if_not(text.begin(), text.end(), isWordCharacter);
        const auto length = static_cast<std::size_t>(end - text.begin());
        if (length >= kShortestWord && length <= kLongestWord) {
            words.emplace(text.substr(0, length));
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
}

}  // namespace

int main()
{
    std::set<std::string> words;
    for (const UtilCmd& cmd : g_util_cmd) {
        addWords(words, cmd.name);
        addWords(words, cmd.help);
    }
    for (const std::string& word : words) {
        std::printf("\"%s\"\n", word.c_str());
    }
    return 0;
}
