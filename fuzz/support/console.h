/// Lines for the console, as inputs hold them.
#ifndef FUZZ_CONSOLE_H
#define FUZZ_CONSOLE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace fuzz
{

/// An input of two parts with a NUL between them: a text, which may have many lines, and bytes that something answers.
struct TextAndAnswers {
    std::string_view text;
    std::span<const std::uint8_t> answers;
};

TextAndAnswers splitInput(const std::uint8_t* data, std::size_t size);

/// Runs each line of a text as if it had been typed. What is longer than a line may be is cut. Ends early when a line
/// ends the console.
void runLines(std::string_view text);

}  // namespace fuzz

#endif
