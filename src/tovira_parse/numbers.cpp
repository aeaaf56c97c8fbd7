#include "tovira_parse/numbers.h"

#include <cstdlib>

namespace
{

constexpr int kNoDigit = -1;

int hexDigit(char character)
{
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    if (character >= 'A' && character <= 'F') {
        return character - 'A' + 10;
    }
    if (character >= 'a' && character <= 'f') {
        return character - 'a' + 10;
    }
    return kNoDigit;
}

}  // namespace

std::int64_t htoi(const char* text)
{
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text += 2;
    }
    std::uint64_t value = 0;
    for (int digit = hexDigit(*text); digit != kNoDigit; digit = hexDigit(*++text)) {
        value = (value << 4U) + static_cast<std::uint64_t>(digit);
    }
    return static_cast<std::int64_t>(value);
}

std::int64_t itoi(const char* text)
{
    std::uint64_t value = 0;
    for (; *text >= '0' && *text <= '9'; ++text) {
        value = value * 10U + static_cast<std::uint64_t>(*text - '0');
    }
    return static_cast<std::int64_t>(value);
}

int string_is_number(const char* text)
{
    for (; *text != '\0'; ++text) {
        if (hexDigit(*text) == kNoDigit && *text != 'x') {
            return 0;
        }
    }
    return 1;
}

std::int32_t htoi32(const char* text)
{
    return static_cast<std::int32_t>(htoi(text));
}

std::int32_t decimal32(const char* text)
{
    constexpr int kDecimal = 10;
    return static_cast<std::int32_t>(strtol(text, nullptr, kDecimal));
}
