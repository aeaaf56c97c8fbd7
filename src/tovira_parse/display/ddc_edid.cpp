// A monitor's EDID: ddc fetches, shows and saves it, edid parse shows a saved or the last one.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "tovira_parse/files.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr int kNoSuchChannel = -22;

// 256 blocks of 128 bytes: no EDID is longer, whatever length is claimed for it.
constexpr int kLongestEdid = 0x8000;

void saveEdid(const char* name, const std::uint8_t* edid, int length)
{
    const int size = edid == nullptr ? 0 : std::clamp(length, 0, kLongestEdid);
    saveFile(name, edid, static_cast<std::size_t>(size));
}

}  // namespace

int doDDC(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    std::uint32_t typedChannel = 0;
    if (!tokens.number(typedChannel)) {
        return kStatusBadArgument;
    }
    const auto channel = static_cast<std::int32_t>(typedChannel);
    int length = 0;
    std::uint8_t* edid = nullptr;
    int valid = 0;
    const int result = vekDDCRead(channel, &length, &edid, &valid);
    if (result == kNoSuchChannel) {
        printf("DDC %d for card %d is not exist\n", channel, vekGetCard());
        return kStatusDone;
    }
    if (result != 0) {
        printf("DDC %d get edid failed with err=%d\n", channel, result);
        return kStatusDone;
    }
    if (valid == 0) {
        puts("EDID is invalid");
    }
    edid_print_helper(edid, length, 1);
    saveEdid(tokens.argument(), edid, length);
    return kStatusDone;
}

int doEdid(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    char* const subCommand = tokens.word();
    if (subCommand == nullptr) {
        return kStatusBadArgument;
    }
    upperCase(subCommand);
    if (strcmp(subCommand, "PARSE") != 0) {
        return kStatusBadArgument;
    }
    do_edid_parse(tokens.word());
    return kStatusDone;
}
