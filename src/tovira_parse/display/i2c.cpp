// The I2C buses: i2c set, rb, wb and rbs.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "tovira_parse/display/display_output.h"
#include "tovira_parse/files.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/sub_commands.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr std::int32_t kLongestBlock = 256;
constexpr RegisterRunLayout kBlock = {.itemsPerLine = 16, .addressDigits = 4, .digits = 2};

// The target of all transfers, chosen with `i2c set`.
std::int32_t channel = 0;
std::uint32_t devadr = 0;

int reportTransferError(int error)
{
    printf("I2C error: %s\n", textOrUnknown(vekI2cErrString(error)));
    return kStatusDone;
}

int setTarget(Tokens& arguments)
{
    auto typedChannel = static_cast<std::uint32_t>(channel);
    if (arguments.number(typedChannel)) {
        channel = static_cast<std::int32_t>(typedChannel);
        arguments.number(devadr);
    }
    printf("Set I2C to channel %d with device address 0x%02x (7-bit)\n", channel, devadr);
    return kStatusDone;
}

int readOneByte(Tokens& arguments)
{
    std::uint32_t subAddress = 0;
    if (!arguments.number(subAddress)) {
        return kStatusBadArgument;
    }
    std::uint8_t byte = 0;
    const int error = vekI2cRead(channel, devadr, subAddress, 1, &byte);
    if (error != 0) {
        return reportTransferError(error);
    }
    printf("%04x: %02x\n", subAddress, byte);
    return kStatusDone;
}

int writeOneByte(Tokens& arguments)
{
    std::uint32_t subAddress = 0;
    std::uint32_t value = 0;
    if (!arguments.number(subAddress) || !arguments.number(value)) {
        return kStatusBadArgument;
    }
    const auto byte = static_cast<std::uint8_t>(value);
    const int error = vekI2cWrite(channel, devadr, subAddress, 1, &byte);
    return error != 0 ? reportTransferError(error) : kStatusDone;
}

void printBlock(std::uint32_t subAddress, const std::uint8_t* bytes, std::int32_t count)
{
    for (std::int32_t i = 0; i < count; ++i) {
        printRunItem(kBlock, i, subAddress + static_cast<std::uint32_t>(i), bytes[i]);
    }
    putchar('\n');
}

int readBlock(Tokens& arguments)
{
    std::uint32_t subAddress = 0;
    std::uint32_t typedCount = 0;
    if (!arguments.number(subAddress) || !arguments.number(typedCount)) {
        return kStatusBadArgument;
    }
    const std::int32_t count = std::min(static_cast<std::int32_t>(typedCount), kLongestBlock);
    if (count < 0) {
        return kStatusBadArgument;
    }
    std::array<std::uint8_t, kLongestBlock> bytes{};
    const int error = vekI2cRead(channel, devadr, subAddress, count, bytes.data());
    if (error != 0) {
        return reportTransferError(error);
    }
    printBlock(subAddress, bytes.data(), count);
    saveFile(arguments.argument(), bytes.data(), static_cast<std::size_t>(count));
    return kStatusDone;
}

constexpr SubCommand<Tokens> kSubCommands[] = {
    {"SET", setTarget},
    {"RB", readOneByte},
    {"WB", writeOneByte},
    {"RBS", readBlock},
};

}  // namespace

int doI2c(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    const char* const subCommand = tokens.keyword();
    return subCommand == nullptr ? kStatusBadArgument
                                 : runSubCommand(kSubCommands, subCommand, tokens, kStatusBadArgument);
}
