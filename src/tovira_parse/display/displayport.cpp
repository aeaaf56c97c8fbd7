// A DisplayPort output: controller, AUX channel, I2C over AUX, PHY, EDID and mode; and the eDP panel's backlight.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "tovira_parse/display/display_output.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/heap.h"
#include "tovira_parse/hex_dump.h"
#include "tovira_parse/sub_commands.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr std::uint32_t kEdidDevice = 0x50;

// A `dp` command while its arguments are taken.
struct DpCommand {
    Tokens arguments;
    std::int32_t channel;
};

// Runs the operation that the next argument names. One that does not exist does nothing.
int runOperation(DpCommand& command, const auto& operations)
{
    const char* const operation = command.arguments.keyword();
    return operation == nullptr ? kStatusBadArgument : runSubCommand(operations, operation, command, kStatusDone);
}

// Both block reads and all single accesses fail with these, whichever of the sink's or the controller's parts they
// are made to.
int reportReadError(std::uint32_t address)
{
    printf("aux read [%x] error\n", address);
    return kStatusDone;
}

int reportWriteError(std::uint32_t address, int digits, std::uint32_t value)
{
    printf("aux write [%x] with %0*x error\n", address, digits, value);
    return kStatusDone;
}

template <typename Read>
int readByteBlock(DpCommand& command, Read read)
{
    std::uint32_t address = 0;
    std::uint32_t typedCount = 0;
    if (!command.arguments.number(address) || !command.arguments.number(typedCount)) {
        return kStatusBadArgument;
    }
    const auto count = static_cast<std::int32_t>(typedCount);
    if (count < 0) {
        return kStatusBadArgument;
    }
    const HeapPointer<std::uint8_t> bytes = allocateBytes(typedCount);
    if (bytes == nullptr) {
        return kStatusBadCommand;
    }
    if (read(command.channel, address, bytes.get(), count) != 0) {
        printf("aux read buffer [%x@%x] error\n", address, typedCount);
    } else {
        printByte(address, bytes.get(), count);
    }
    return kStatusDone;
}

int readAuxByte(DpCommand& command)
{
    std::uint32_t address = 0;
    if (!command.arguments.number(address)) {
        return kStatusBadArgument;
    }
    std::uint8_t value = 0;
    if (vekDpAuxRead(command.channel, address, &value) != 0) {
        return reportReadError(address);
    }
    printf("%08x: %02x\n", address, value);
    return kStatusDone;
}

int readAuxBlock(DpCommand& command)
{
    return readByteBlock(command, vekDpAuxReadBuf);
}

int writeAuxByte(DpCommand& command)
{
    std::uint32_t address = 0;
    std::uint32_t typedValue = 0;
    if (!command.arguments.number(address) || !command.arguments.number(typedValue)) {
        return kStatusBadArgument;
    }
    const auto value = static_cast<std::uint8_t>(typedValue);
    return vekDpAuxWrite(command.channel, address, value) == 0 ? kStatusDone : reportWriteError(address, 2, value);
}

int runAux(DpCommand& command)
{
    static constexpr SubCommand<DpCommand> kOperations[] = {
        {"R", readAuxByte}, {"RS", readAuxBlock}, {"W", writeAuxByte}};
    return runOperation(command, kOperations);
}

int readI2cByte(DpCommand& command)
{
    std::uint32_t address = 0;
    if (!command.arguments.number(address)) {
        return kStatusBadArgument;
    }
    std::uint8_t value = 0;
    if (vekDpI2cRead(command.channel, kEdidDevice, static_cast<std::uint8_t>(address), &value) != 0) {
        printf("aux i2c read [%x] error\n", address);
        return kStatusDone;
    }
    printf("%08x: %02x\n", address, value);
    return kStatusDone;
}

int readI2cBlock(DpCommand& command)
{
    // The device has 256 sub-addresses; what is printed keeps the address as it was typed.
    return readByteBlock(command, [](int channel, std::uint32_t address, std::uint8_t* bytes, int count) {
        return vekDpI2cReadBuf(channel, kEdidDevice, static_cast<std::uint8_t>(address), bytes, count);
    });
}

int runI2c(DpCommand& command)
{
    static constexpr SubCommand<DpCommand> kOperations[] = {{"R", readI2cByte}, {"RS", readI2cBlock}};
    return runOperation(command, kOperations);
}

// A register file of a DisplayPort output.
template <typename Item>
struct RegisterFile {
    int (*read)(int channel, std::uint32_t address, Item* value);
    int (*write)(int channel, std::uint32_t address, Item value);
    RegisterRunLayout run;
};

constexpr RegisterFile<std::uint32_t> kPhy = {
    .read = vekDpPhyRead,
    .write = vekDpPhyWrite,
    .run = {.itemsPerLine = 4, .addressDigits = 8, .digits = 8},
};
constexpr RegisterFile<std::uint16_t> kCdb = {
    .read = vekDpCdbRead,
    .write = vekDpCdbWrite,
    .run = {.itemsPerLine = 8, .addressDigits = 8, .digits = 4},
};

template <const auto& File, typename Item>
int readRegister(DpCommand& command)
{
    std::uint32_t address = 0;
    if (!command.arguments.number(address)) {
        return kStatusBadArgument;
    }
    Item value = 0;
    if (File.read(command.channel, address, &value) != 0) {
        return reportReadError(address);
    }
    printf("%08x: %0*x\n", address, File.run.digits, std::uint32_t{value});
    return kStatusDone;
}

// The last line is left open.
template <const auto& File, typename Item>
int readRegisterRun(DpCommand& command)
{
    std::uint32_t start = 0;
    std::uint32_t typedCount = 0;
    if (!command.arguments.number(start) || !command.arguments.number(typedCount)) {
        return kStatusBadArgument;
    }
    const auto count = static_cast<std::int32_t>(typedCount);
    for (std::int32_t i = 0; i < count; ++i) {
        const std::uint32_t address = start + static_cast<std::uint32_t>(sizeof(Item)) * static_cast<std::uint32_t>(i);
        Item value = 0;
        if (File.read(command.channel, address, &value) != 0) {
            printf("DP%d: phy read [%x] error\n", command.channel, start);
            break;
        }
        printRunItem(File.run, i, address, value);
    }
    return kStatusDone;
}

template <const auto& File, typename Item>
int writeRegister(DpCommand& command)
{
    std::uint32_t address = 0;
    std::uint32_t typedValue = 0;
    if (!command.arguments.number(address) || !command.arguments.number(typedValue)) {
        return kStatusBadArgument;
    }
    const auto value = static_cast<Item>(typedValue);
    return File.write(command.channel, address, value) == 0 ? kStatusDone
                                                            : reportWriteError(address, File.run.digits, value);
}

template <const auto& File, typename Item>
int runRegisterFile(DpCommand& command)
{
    static constexpr SubCommand<DpCommand> kOperations[] = {
        {"R", readRegister<File, Item>}, {"RS", readRegisterRun<File, Item>}, {"W", writeRegister<File, Item>}};
    return runOperation(command, kOperations);
}

int runInit(DpCommand& command)
{
    vekDpInit(command.channel);
    return kStatusDone;
}

int runTrain(DpCommand& command)
{
    vekDpLinkTraining(command.channel);
    return kStatusDone;
}

int runConfig(DpCommand& command)
{
    vekDpCTLCfg(command.channel);
    return kStatusDone;
}

int runSelfTest(DpCommand& command)
{
    std::uint32_t typedState = 0;
    if (!command.arguments.number(typedState)) {
        return kStatusBadArgument;
    }
    const auto state = static_cast<std::uint8_t>(typedState);
    if (vekEdpSelfTestSet(command.channel, state) == 0) {
        printf("eDP set self test mode state %d ok\n", state);
    } else {
        puts("eDP set self test mode error");
    }
    return kStatusDone;
}

int runEdid(DpCommand& command)
{
    std::array<std::uint8_t, VEK_EDID_BUFFER_SIZE> edid{};
    int length = 0;
    const int result = vekDpAuxEdidGet(command.channel, edid.data(), &length);
    if (result != 0) {
        printf("dp %d get edid failed with err=%d\n", command.channel, result);
        return kStatusDone;
    }
    // There is no more of it than the buffer holds, whatever length is claimed for it.
    edid_print_helper(edid.data(), std::min(length, int{VEK_EDID_BUFFER_SIZE}), 1);
    return kStatusDone;
}

int runMode(DpCommand& command)
{
    VekDisplayMode mode = {};
    vekDpModeRead(command.channel, &mode);
    printDisplayMode("DisplayPort", command.channel, mode);
    return kStatusDone;
}

constexpr SubCommand<DpCommand> kSubCommands[] = {
    {"INIT", runInit},
    {"TRAIN", runTrain},
    {"CONFIG", runConfig},
    {"ST", runSelfTest},
    {"AUX", runAux},
    {"DDC", runEdid},
    {"I2C", runI2c},
    {"PHY", runRegisterFile<kPhy, std::uint32_t>},
    {"CDB", runRegisterFile<kCdb, std::uint16_t>},
    {"MODE", runMode},
};

// Hands the number that has to follow to one of the backlight's settings.
template <int (*Set)(int)>
int setBacklight(Tokens& arguments)
{
    std::uint32_t value = 0;
    if (!arguments.number(value)) {
        return kStatusBadArgument;
    }
    Set(static_cast<std::int32_t>(value));
    return kStatusDone;
}

int enableBacklight(Tokens& /*arguments*/)
{
    vekEdpEnablePwm();
    return kStatusDone;
}

constexpr SubCommand<Tokens> kBacklightSubCommands[] = {
    {"PWM", setBacklight<vekEdpPwmSet>},
    {"LIGHT", setBacklight<vekEdpLightSet>},
    {"PWMEN", enableBacklight},
};

}  // namespace

int doDp(char* cmdText, int /*repeat*/)
{
    DpCommand command{.arguments = {cmdText}, .channel = 0};
    command.arguments.word();
    std::uint32_t channel = 0;
    if (!command.arguments.number(channel)) {
        return kStatusBadArgument;
    }
    command.channel = static_cast<std::int32_t>(channel);
    const char* const subCommand = command.arguments.keyword();
    return subCommand == nullptr ? kStatusBadArgument
                                 : runSubCommand(kSubCommands, subCommand, command, kStatusBadArgument);
}

int doEdp(char* cmdText, int /*repeat*/)
{
    Tokens arguments{cmdText};
    arguments.word();
    const char* const subCommand = arguments.keyword();
    return subCommand == nullptr ? kStatusBadArgument
                                 : runSubCommand(kBacklightSubCommands, subCommand, arguments, kStatusBadArgument);
}
