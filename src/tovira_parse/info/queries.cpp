// What the kernel driver tells: reports, the selected card, and lists of its own.

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "tovira_parse/handlers.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr std::size_t kLongestKeyword = 10;

// A card's index may be typed with a sign, if only to be refused by its value.
std::int32_t cardIndex(const char* text)
{
    if (*text != '-') {
        return htoi32(text);
    }
    return static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(htoi32(text + 1)));
}

int selectCard(std::int32_t index, int current)
{
    int count = 0;
    vekQueryInt(VEK_QUERY_CARD_COUNT, &count, current);
    if (index < 0 || index >= count) {
        printf("card index %d is out of range [0, %d). current card index: %d\n", index, count, current);
        return kStatusBadArgument;
    }
    vekSetCard(index);
    printf("set card index: %d\n", index);
    return kStatusDone;
}

}  // namespace

int doQuery(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    std::array<char, kLongestKeyword + 1> keyword{};
    if (char* const token = tokens.word()) {
        const std::size_t length = strlen(token);
        if (length > kLongestKeyword) {
            return kStatusBadArgument;
        }
        upperCase(token);
        memcpy(keyword.data(), token, length);
    }
    std::array<char, VEK_QUERY_REPORT_SIZE> report{};
    if (vekQueryInfo(keyword.data(), report.data()) < 0) {
        return kStatusBadArgument;
    }
    printf("%.*s", int{VEK_QUERY_REPORT_SIZE}, report.data());
    return kStatusDone;
}

int doCard(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    const char* const token = tokens.word();
    const int current = vekGetCard();
    if (token == nullptr) {
        printf("current card index: %d\n", current);
        return kStatusDone;
    }
    const std::int32_t index = cardIndex(token);
    if (index == current) {
        printf("set card index: %d\n", current);
        return kStatusDone;
    }
    return selectCard(index, current);
}

int doDump(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    const char* const list = tokens.keyword();
    return list != nullptr && std::string_view(list) == "VRAMFREE" ? vekDumpVramFree() : kStatusBadArgument;
}
