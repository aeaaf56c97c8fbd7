// The I2C buses: i2c set, rb, wb and rbs.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "tovira_parse/files.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr std::int32_t kLongestBlock = 256;
constexpr int kBytesPerLine = 16;

// The target of all transfers, chosen with `i2c set`.
std::int32_t channel = 0;
std::uint32_t devadr = 0;

int reportTransferError(int error)
{
    printf("I2C error: %s\n", vekI2cErrString(error));
    return kStatusDone;
}

int setTarget(Tokens& arguments)
{
    const char* const typedChannel = arguments.argument();
    const char* const typedDevice = typedChannel == nullptr ? nullptr : arguments.argument();
    if (typedChannel != nullptr) {
        channel = htoi32(typedChannel);
    }
    if (typedDevice != nullptr) {
        devadr = static_cast<std::uint32_t>(htoi(typedDevice));
    }
    printf("Set I2C to channel %d with device address 0x%02x (7-bit)\n", channel, devadr);
    return kStatusDone;
}

int readOneByte(Tokens& arguments)
{
    const char* const typedSubAddress = arguments.argument();
    if (typedSubAddress == nullptr) {
        return kStatusBadArgument;
    }
    const auto subAddress = static_cast<std::uint32_t>(htoi(typedSubAddress));
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
    const char* const typedSubAddress = arguments.argument();
    const char* const typedValue = arguments.argument();
    if (typedValue == nullptr) {
        return kStatusBadArgument;
    }
    const auto byte = static_cast<std::uint8_t>(htoi(typedValue));
    const int error = vekI2cWrite(channel, devadr, static_cast<std::uint32_t>(htoi(typedSubAddress)), 1, &byte);
    return error != 0 ? reportTransferError(error) : kStatusDone;
}

void printBlock(std::uint32_t subAddress, const std::uint8_t* bytes, std::int32_t count)
{
    for (std::int32_t i = 0; i < count; ++i) {
        if (i % kBytesPerLine == 0) {
            printf("%s%04x:", i == 0 ? "" : "\n", subAddress + static_cast<std::uint32_t>(i));
        }
        printf(" %02x", bytes[i]);
    }
    putchar('\n');
}

int readBlock(Tokens& arguments)
{
    const char* const typedSubAddress = arguments.argument();
    const char* const typedCount = arguments.argument();
    if (typedCount == nullptr || htoi32(typedCount) < 0) {
        return kStatusBadArgument;
    }
    const auto subAddress = static_cast<std::uint32_t>(htoi(typedSubAddress));
    const std::int32_t count = std::min(htoi32(typedCount), kLongestBlock);
    std::array<std::uint8_t, kLongestBlock> bytes{};
    const int error = vekI2cRead(channel, devadr, subAddress, count, bytes.data());
    if (error != 0) {
        return reportTransferError(error);
    }
    printBlock(subAddress, bytes.data(), count);
    saveFile(arguments.argument(), bytes.data(), static_cast<std::size_t>(count));
    return kStatusDone;
}

}  // namespace

int doI2c(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    const char* const subCommand = tokens.keyword();
    if (subCommand == nullptr) {
        return kStatusBadArgument;
    }
    const std::string_view keyword = subCommand;
    if (keyword == "SET") {
        return setTarget(tokens);
    }
    if (keyword == "RB") {
        return readOneByte(tokens);
    }
    if (keyword == "WB") {
        return writeOneByte(tokens);
    }
    if (keyword == "RBS") {
        return readBlock(tokens);
    }
    return kStatusBadArgument;
}
