// What the display controllers put out: vga and dvo by output, crtc by controller.

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "tovira_parse/display/display_output.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr std::uint32_t kLastChannel = 3;

int showControllerMode(const char* output, std::uint32_t channel)
{
    const auto controller = static_cast<std::int32_t>(channel);
    VekDisplayMode mode = {};
    vekCrtcModeRead(controller, &mode);
    printDisplayMode(output, controller, mode);
    printf(" flags = 0x%x (just for h/v sync)\n", static_cast<std::uint32_t>(mode.flags));
    return kStatusDone;
}

// Shows the mode of a channel, or of channel 0 in the place of one that cannot be.
int showOutputMode(const char* output, const char* command, std::uint32_t channel)
{
    if (channel > kLastChannel) {
        printf("%s channel set out of range[0-3], current %s channel is 0\n", command, command);
        channel = 0;
    }
    return showControllerMode(output, channel);
}

int setOneGain(Tokens& arguments, char colour)
{
    std::uint32_t gain = 0;
    if (!arguments.number(gain)) {
        return kStatusBadArgument;
    }
    vekVgaSetSigleGain(colour, static_cast<std::uint8_t>(gain));
    return kStatusDone;
}

int setAllGains(Tokens& arguments)
{
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    if (!arguments.number(red) || !arguments.number(green) || !arguments.number(blue)) {
        return kStatusBadArgument;
    }
    vekVgaSetGain(static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green), static_cast<std::uint8_t>(blue));
    return kStatusDone;
}

}  // namespace

int doVga(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    std::uint32_t channel = 0;
    if (!tokens.number(channel) || tokens.keyword() == nullptr) {
        return kStatusBadArgument;
    }
    const std::string_view subCommand = tokens.last;
    if (subCommand == "R" || subCommand == "G" || subCommand == "B") {
        return setOneGain(tokens, subCommand.front());
    }
    if (subCommand == "C") {
        return setAllGains(tokens);
    }
    return subCommand == "MODE" ? showOutputMode("VGA", "vga", channel) : kStatusBadArgument;
}

int doDvo(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    std::uint32_t channel = 0;
    if (!tokens.number(channel) || tokens.keyword() == nullptr) {
        return kStatusBadArgument;
    }
    return std::string_view(tokens.last) == "MODE" ? showOutputMode("DVO", "dvo", channel) : kStatusBadArgument;
}

int doCrtc(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    char* const first = tokens.word();
    if (first == nullptr) {
        return kStatusBadArgument;
    }
    upperCase(first);
    const std::string_view keyword = first;
    if (keyword == "OUTPUT") {
        vekCrtcOutputPrint();
        return kStatusDone;
    }
    if (keyword == "GAMMA") {
        vekCrtcGammaSet(tokens.rest);
        return kStatusDone;
    }
    const auto channel = static_cast<std::uint32_t>(htoi(first));
    char* const subCommand = channel > kLastChannel ? nullptr : tokens.word();
    if (subCommand == nullptr) {
        return kStatusBadArgument;
    }
    upperCase(subCommand);
    return std::string_view(subCommand) == "MODE" ? showControllerMode("CRTC", channel) : kStatusBadArgument;
}
