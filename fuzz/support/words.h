/// The words of a command line, as a program gets them.
#ifndef FUZZ_WORDS_H
#define FUZZ_WORDS_H

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace fuzz
{

/// Each line of a text is a word, in memory of its own so that reading past its end shows.
class Words
{
public:
    explicit Words(std::string_view text)
    {
        while (!text.empty()) {
            const std::size_t end = text.find('\n');
            add(text.substr(0, end));
            text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        }
        for (std::vector<char>& word : words_) {
            pointers_.push_back(word.data());
        }
        pointers_.push_back(nullptr);
    }

    int count() const { return static_cast<int>(words_.size()); }
    char** pointers() { return pointers_.data(); }

    /// Length of the longest word.
    std::size_t longest() const
    {
        std::size_t length = 0;
        for (const std::vector<char>& word : words_) {
            length = std::max(length, word.size() - 1);
        }
        return length;
    }

private:
    void add(std::string_view word)
    {
        std::vector<char>& added = words_.emplace_back(word.begin(), word.end());
        added.push_back('\0');
        added.shrink_to_fit();
    }

    std::vector<std::vector<char>> words_;
    std::vector<char*> pointers_;
};

}  // namespace fuzz

#endif
