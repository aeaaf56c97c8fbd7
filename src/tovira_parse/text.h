/// Letters and tokens of command texts.
#ifndef TOVIRA_PARSE_TEXT_H
#define TOVIRA_PARSE_TEXT_H

#include <array>
#include <cstdint>
#include <string_view>

/// A set of characters between tokens.
struct DelimiterSet {
    std::array<bool, 256> members{};

    constexpr explicit DelimiterSet(std::string_view characters)
    {
        for (const char character : characters) {
            members[static_cast<unsigned char>(character)] = true;
        }
    }
    constexpr bool contains(char character) const { return members[static_cast<unsigned char>(character)]; }
};

/// Delimiters around a command word.
inline constexpr DelimiterSet kWordDelimiters(" ,\t\r\n");
/// Delimiters between the arguments that follow it.
inline constexpr DelimiterSet kArgumentDelimiters(" ,\t");

/// Turns the letters `a` to `z` of the text into upper case, in place and whatever the locale.
void upperCase(char* text);

/// Turns the letters `A` to `Z` of the text into lower case, in place and whatever the locale.
void lowerCase(char* text);

/// The text, or "unknown" where the device-access library gave none.
const char* textOrUnknown(const char* text);

/// Splits a modifiable text into tokens. A token stays valid as long as the text does.
struct Tokens {
    char* rest;                  ///< what has not been split yet
    const char* last = nullptr;  ///< the token taken last

    /// The command word, or null when the text holds none.
    char* word() { return next(kWordDelimiters); }
    /// The next argument, or null when there is none.
    char* argument() { return next(kArgumentDelimiters); }
    /// The next argument in upper case, as keywords are compared; null when there is none.
    char* keyword();
    /// Takes the next argument as a hexadecimal number, its low 32 bits. False when there is none.
    bool number(std::uint32_t& value);
    /// The next run of characters that are not among the delimiters, or null when there is none.
    char* next(const DelimiterSet& delimiters);
};

#endif
