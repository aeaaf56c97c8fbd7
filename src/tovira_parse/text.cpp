#include "tovira_parse/text.h"

#include "tovira_parse/numbers.h"

namespace
{

void shiftLetters(char* text, char first, char last, char to)
{
    for (char* letter = text; *letter != '\0'; ++letter) {
        if (*letter >= first && *letter <= last) {
            *letter = static_cast<char>(*letter - first + to);
        }
    }
}

}  // namespace

void upperCase(char* text)
{
    shiftLetters(text, 'a', 'z', 'A');
}

void lowerCase(char* text)
{
    shiftLetters(text, 'A', 'Z', 'a');
}

const char* textOrUnknown(const char* text)
{
    return text == nullptr ? "unknown" : text;
}

char* Tokens::keyword()
{
    char* const token = argument();
    if (token != nullptr) {
        upperCase(token);
    }
    return token;
}

bool Tokens::number(std::uint32_t& value)
{
    const char* const token = argument();
    if (token == nullptr) {
        return false;
    }
    value = static_cast<std::uint32_t>(htoi(token));
    return true;
}

char* Tokens::next(const DelimiterSet& delimiters)
{
    while (*rest != '\0' && delimiters.contains(*rest)) {
        ++rest;
    }
    if (*rest == '\0') {
        return nullptr;
    }
    char* const token = rest;
    last = token;
    while (*rest != '\0' && !delimiters.contains(*rest)) {
        ++rest;
    }
    if (*rest != '\0') {
        *rest++ = '\0';
    }
    return token;
}
