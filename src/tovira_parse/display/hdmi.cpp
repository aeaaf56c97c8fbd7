// An HDMI output: its PHY, hot-plug state, DDC, EDID and mode.

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "tovira_parse/display/display_output.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr RegisterRunLayout kPhyRun = {.itemsPerLine = 4, .addressDigits = 8, .digits = 8};
constexpr std::uint32_t kPhyRegisterStride = 4;

// An `hdmi` command while its tokens are taken.
struct HdmiCommand {
    Tokens tokens;
    std::int32_t channel;

    // The token taken last is what the keywords and the operations are compared with.
    bool lastIs(std::string_view keyword) const { return tokens.last == keyword; }
};

void reportFailure(int result, std::int32_t channel, const char* work)
{
    if (result != 0) {
        printf("hdmi %d:%s failed\n", channel, work);
    }
}

int readPhyRegister(HdmiCommand& command)
{
    std::uint32_t address = 0;
    if (!command.tokens.number(address)) {
        return kStatusBadArgument;
    }
    std::uint16_t value = 0;
    if (vekHdmiPhyRead(command.channel, address, &value) == 0) {
        printf("%08x: %04x\n", address, value);
    } else {
        printf("hdmi %d: phy read [%x] error\n", command.channel, address);
    }
    return kStatusDone;
}

int readPhyRun(HdmiCommand& command)
{
    std::uint32_t start = 0;
    std::uint32_t typedCount = 0;
    if (!command.tokens.number(start) || !command.tokens.number(typedCount)) {
        return kStatusBadArgument;
    }
    const auto count = static_cast<std::int32_t>(typedCount);
    for (std::int32_t i = 0; i < count; ++i) {
        const std::uint32_t address = start + kPhyRegisterStride * static_cast<std::uint32_t>(i);
        std::uint16_t value = 0;
        if (vekHdmiPhyRead(command.channel, address, &value) != 0) {
            printf("HDMI%d: phy read [%x] error\n", command.channel, start);
            break;
        }
        printRunItem(kPhyRun, i, address, value);
    }
    putchar('\n');
    return kStatusDone;
}

int writePhyRegister(HdmiCommand& command)
{
    std::uint32_t address = 0;
    std::uint32_t typedValue = 0;
    if (!command.tokens.number(address) || !command.tokens.number(typedValue)) {
        return kStatusBadArgument;
    }
    const auto value = static_cast<std::uint16_t>(typedValue);
    if (vekHdmiPhyWrite(command.channel, address, value) != 0) {
        printf("hdmi %d: phy write [%x] with %04x error\n", command.channel, address, value);
    }
    return kStatusDone;
}

int runPhy(HdmiCommand& command)
{
    if (command.tokens.keyword() == nullptr) {
        return kStatusBadArgument;
    }
    if (command.lastIs("R")) {
        return readPhyRegister(command);
    }
    if (command.lastIs("RS")) {
        return readPhyRun(command);
    }
    if (command.lastIs("W")) {
        return writePhyRegister(command);
    }
    if (command.lastIs("ST")) {
        reportFailure(vekHdmiPhyStart(command.channel), command.channel, "phy config start");
    } else if (command.lastIs("EN")) {
        reportFailure(vekHdmiPhyEnd(command.channel), command.channel, "phy config end");
    } else if (command.lastIs("RE")) {
        reportFailure(vekHdmiPhyReset(command.channel), command.channel, "phy reset");
    }
    return kStatusDone;
}

int runHotPlug(HdmiCommand& command)
{
    if (command.tokens.keyword() == nullptr) {
        return kStatusBadArgument;
    }
    if (command.lastIs("R")) {
        std::uint8_t status = 0;
        if (vekHdmiHpdSense(command.channel, &status) == 0) {
            printf("hpd status: %d\n", status);
        } else {
            printf("hdmi %d:hpd read error\n", command.channel);
        }
    }
    return kStatusDone;
}

int readDdcByte(HdmiCommand& command)
{
    std::uint32_t slave = 0;
    std::uint32_t subAddress = 0;
    if (!command.tokens.number(slave) || !command.tokens.number(subAddress)) {
        return kStatusBadArgument;
    }
    std::uint8_t value = 0;
    if (vekHdmiDDCRead(command.channel, static_cast<std::uint8_t>(slave), static_cast<std::uint8_t>(subAddress),
                       &value) == 0) {
        printf("%08x: %04x\n", subAddress, value);
    } else {
        printf("hdmi %d:ddc read [%x] error\n", command.channel, subAddress);
    }
    return kStatusDone;
}

int writeDdcByte(HdmiCommand& command)
{
    std::uint32_t slave = 0;
    std::uint32_t subAddress = 0;
    std::uint32_t typedValue = 0;
    if (!command.tokens.number(slave) || !command.tokens.number(subAddress) || !command.tokens.number(typedValue)) {
        return kStatusBadArgument;
    }
    const auto value = static_cast<std::uint8_t>(typedValue);
    if (vekHdmiDDCWrite(command.channel, static_cast<std::uint8_t>(slave), static_cast<std::uint8_t>(subAddress),
                        value) != 0) {
        printf("hdmi %d:ddc write [%x] with %04x error\n", command.channel, subAddress, value);
    }
    return kStatusDone;
}

int runDdc(HdmiCommand& command)
{
    if (command.tokens.keyword() == nullptr) {
        return kStatusBadArgument;
    }
    if (command.lastIs("I")) {
        const int result = vekHdmiDDCInit(command.channel);
        reportFailure(result, command.channel, "DDC init");
        if (result == 0) {
            puts("DDC init successed");
        }
        return kStatusDone;
    }
    if (command.lastIs("R")) {
        return readDdcByte(command);
    }
    if (command.lastIs("W")) {
        return writeDdcByte(command);
    }
    return kStatusDone;
}

int runEdid(HdmiCommand& command)
{
    if (command.tokens.keyword() == nullptr) {
        return kStatusBadArgument;
    }
    if (command.lastIs("R")) {
        reportFailure(vekHdmiEDIDRead(command.channel), command.channel, "EDID read");
    }
    return kStatusDone;
}

int runMode(HdmiCommand& command)
{
    VekDisplayMode mode = {};
    vekHdmiModeRead(command.channel, &mode);
    printDisplayMode("HDMI", command.channel, mode);
    return kStatusDone;
}

struct Keyword {
    std::string_view name;
    int (*run)(HdmiCommand& command);
};

constexpr Keyword kKeywords[] = {
    {"PHY", runPhy}, {"HPD", runHotPlug}, {"DDC", runDdc}, {"EDID", runEdid}, {"MODE", runMode},
};

}  // namespace

int doHdmi(char* cmdText, int /*repeat*/)
{
    HdmiCommand command{.tokens = {cmdText}, .channel = 0};
    command.tokens.word();
    std::uint32_t channel = 0;
    if (!command.tokens.number(channel) || command.tokens.keyword() == nullptr) {
        return kStatusBadArgument;
    }
    command.channel = static_cast<std::int32_t>(channel);
    // A chain rather than a choice: what one keyword leaves as the last token may be a later keyword.
    for (const Keyword& keyword : kKeywords) {
        if (command.lastIs(keyword.name)) {
            const int status = keyword.run(command);
            if (status != kStatusDone) {
                return status;
            }
        }
    }
    return kStatusDone;
}
