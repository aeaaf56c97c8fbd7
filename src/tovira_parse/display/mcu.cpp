// The board's microcontroller: AUX and I2C-over-AUX transfers through its mailbox, a page of the register region.

#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "tovira_parse/handlers.h"
#include "tovira_parse/sub_commands.h"
#include "tovira_parse/text.h"
#include "tovira_parse/wait.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

// Mailbox registers, as offsets in the register region. A transfer's first data byte lies in the middle of the page;
// the data area goes on from the end of the page at its beginning.
enum Mailbox : std::uint32_t {
    kPage = 0x3ff00,
    kSignature = 0x3ff00,        // long
    kLengthField = 0x3ff10,      // byte
    kCommandCode = 0x3ff11,      // byte
    kStatus = 0x3ff12,           // byte
    kDoorbell = 0x3ff13,         // byte
    kAddress = 0x3ff14,          // long
    kCaughtBytes = 0x3ff18,      // byte
    kTransferCount = 0x3ff19,    // byte
    kSubAddress = 0x3ff1a,       // byte
    kCompletion = 0x3ff1c,       // long
    kRequestMark = 0x3ff20,      // byte
    kChecksumRight = 0x3ff21,    // byte
    kFirstDataByte = 0x3ff80,    // byte
    kMcuResetControl = 0x308068  // long
};

constexpr std::uint32_t kFirmwareRuns = 0xDEADBEEF;
constexpr std::uint32_t kResetAsserted = 0xFFFFFF00;
constexpr std::uint32_t kResetReleased = 0xFFFFFF08;
constexpr std::uint32_t kFirmwareStartMicroseconds = 1'000'000;
constexpr std::uint8_t kRing = 0xAA;
constexpr std::uint32_t kCompleted = 0x55AA55AA;
constexpr std::uint8_t kMark = 0x32;

constexpr std::uint8_t kAuxGotNothing = 0x08;
constexpr std::uint8_t kI2cGotNothing = 0x10;

constexpr std::uint8_t kCommandI2cRead = 1;
constexpr std::uint8_t kCommandWrite = 8;
constexpr std::uint8_t kCommandAuxRead = 9;

constexpr std::uint32_t kI2cDevice = 0x50;
constexpr std::uint8_t kWholeBlock = 0x80;

constexpr std::uint32_t kPageSize = 256;
constexpr std::uint32_t kFirstDataOffset = kFirstDataByte - kPage;
constexpr std::uint32_t kBytesPerLine = 16;

std::uint8_t readByte(std::uint32_t offset)
{
    std::uint8_t value = 0;
    vekRegReadByte(offset, &value);
    return value;
}

std::uint32_t readLong(std::uint32_t offset)
{
    std::uint32_t value = 0;
    vekRegReadLong(offset, &value);
    return value;
}

std::uint32_t dataByteAt(std::uint32_t index)
{
    return kPage + (index + kFirstDataOffset) % kPageSize;
}

// Heads a request, after starting the firmware when it does not run.
void ResetMcu(std::uint8_t command, std::uint32_t address, std::uint8_t length)
{
    if (readLong(kSignature) != kFirmwareRuns) {
        vekRegWriteLong(kMcuResetControl, kResetAsserted);
        vekRegWriteLong(kMcuResetControl, kResetReleased);
        waitMicroseconds(kFirmwareStartMicroseconds);
    }
    vekRegWriteByte(kCommandCode, command);
    vekRegWriteLong(kAddress, address);
    vekRegWriteByte(kLengthField, length);
    vekRegWriteByte(kRequestMark, kMark);
}

// There is no limit to the wait: whoever watches a board that never answers ends the program, and keeps what it has
// printed by then.
void ringAndWait()
{
    fflush(stdout);
    vekRegWriteByte(kDoorbell, kRing);
    while (readLong(kCompletion) != kCompleted) {
    }
}

void release()
{
    vekRegWriteLong(kCompletion, 0);
}

// A block that got nothing stays unreleased.
bool gotNothing(std::uint8_t statusBit)
{
    if ((readByte(kStatus) & statusBit) == 0) {
        return false;
    }
    puts("Nothing is get");
    return true;
}

void printBlockByte(const char* label, std::uint32_t index, std::uint8_t value)
{
    if (index % kBytesPerLine == 0) {
        printf("\n%s: 0x%x", label, value);
    } else {
        printf(" 0x%x", value);
    }
}

void readAndPrintBlock(const char* label, std::uint32_t count)
{
    for (std::uint32_t i = 0; i < count; ++i) {
        printBlockByte(label, i, readByte(dataByteAt(i)));
    }
    putchar('\n');
}

int readAuxByte(Tokens& arguments)
{
    std::uint32_t address = 0;
    if (!arguments.number(address)) {
        return kStatusBadArgument;
    }
    ResetMcu(kCommandAuxRead, address, 0);
    vekRegWriteByte(kTransferCount, 1);
    ringAndWait();
    const std::uint8_t value = readByte(kFirstDataByte);
    release();
    if (!gotNothing(kAuxGotNothing)) {
        printf("%08x: %02x\n", address, value);
    }
    return kStatusDone;
}

int readAuxBlock(Tokens& arguments)
{
    std::uint32_t address = 0;
    std::uint32_t count = 0;
    if (!arguments.number(address) || !arguments.number(count)) {
        return kStatusBadArgument;
    }
    ResetMcu(kCommandAuxRead, address, static_cast<std::uint8_t>(count));
    vekRegWriteByte(kTransferCount, static_cast<std::uint8_t>(count + 1));
    ringAndWait();
    if (gotNothing(kAuxGotNothing)) {
        return kStatusDone;
    }
    const std::uint8_t caught = readByte(kCaughtBytes);
    printf("Catch data num: %d\n", caught);
    readAndPrintBlock("data", caught);
    release();
    return kStatusDone;
}

// Both channels write alike and differ in what they print.
constexpr char kAuxWrite[] = "aux write";
constexpr char kI2cWrite[] = "aux i2c write";

template <const char* Report>
int writeByte(Tokens& arguments)
{
    std::uint32_t address = 0;
    std::uint32_t value = 0;
    if (!arguments.number(address) || !arguments.number(value)) {
        return kStatusBadArgument;
    }
    ResetMcu(kCommandWrite, address, 0);
    vekRegWriteByte(kFirstDataByte, static_cast<std::uint8_t>(value));
    ringAndWait();
    const std::uint8_t written = readByte(kFirstDataByte);
    release();
    printf("%s [%x] with %02x done\n", Report, address, written);
    return kStatusDone;
}

int writeAuxBlock(Tokens& arguments)
{
    std::uint32_t address = 0;
    std::uint32_t length = 0;
    if (!arguments.number(address) || !arguments.number(length) || length >= kPageSize) {
        return kStatusBadArgument;
    }
    std::array<std::uint8_t, kPageSize> values{};
    for (std::uint32_t i = 0; i <= length; ++i) {
        std::uint32_t value = 0;
        if (!arguments.number(value)) {
            return kStatusBadArgument;
        }
        values[i] = static_cast<std::uint8_t>(value);
    }
    ResetMcu(kCommandWrite, address, static_cast<std::uint8_t>(length));
    vekRegWriteByte(kTransferCount, static_cast<std::uint8_t>(length + 1));
    for (std::uint32_t i = 0; i <= length; ++i) {
        vekRegWriteByte(dataByteAt(i), values[i]);
        printBlockByte("data", i, values[i]);
    }
    putchar('\n');
    ringAndWait();
    if (!gotNothing(kAuxGotNothing)) {
        release();
    }
    return kStatusDone;
}

int readI2cByte(Tokens& arguments)
{
    std::uint32_t address = 0;
    if (!arguments.number(address)) {
        return kStatusBadArgument;
    }
    ResetMcu(kCommandI2cRead, kI2cDevice, 0);
    vekRegWriteByte(kTransferCount, 1);
    vekRegWriteByte(kSubAddress, static_cast<std::uint8_t>(address));
    ringAndWait();
    const std::uint8_t value = readByte(kFirstDataByte);
    release();
    printf("%08x: %02x\n", address, value);
    return kStatusDone;
}

int readI2cBlock(Tokens& arguments)
{
    std::uint32_t address = 0;
    std::uint8_t count = kWholeBlock;
    // A typed count is one less than the number of bytes, the count of the short form is that number.
    if (arguments.number(address)) {
        std::uint32_t typedCount = 0;
        if (!arguments.number(typedCount)) {
            return kStatusBadArgument;
        }
        count = static_cast<std::uint8_t>(typedCount + 1);
    }
    ResetMcu(kCommandI2cRead, kI2cDevice, 0);
    vekRegWriteByte(kTransferCount, count);
    vekRegWriteByte(kSubAddress, static_cast<std::uint8_t>(address));
    ringAndWait();
    if (gotNothing(kI2cGotNothing)) {
        return kStatusDone;
    }
    readAndPrintBlock("L", count);
    puts(readByte(kChecksumRight) != 0 ? "checksum correct" : "checksum error");
    release();
    return kStatusDone;
}

constexpr SubCommand<Tokens> kAuxOperations[] = {
    {"R", readAuxByte},
    {"RS", readAuxBlock},
    {"W", writeByte<kAuxWrite>},
    {"WS", writeAuxBlock},
};

constexpr SubCommand<Tokens> kI2cOperations[] = {
    {"R", readI2cByte},
    {"RS", readI2cBlock},
    {"W", writeByte<kI2cWrite>},
};

}  // namespace

int doMcu(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    const char* const channelToken = tokens.keyword();
    if (channelToken == nullptr) {
        return kStatusBadArgument;
    }
    const std::string_view channel = channelToken;
    if (channel != "AUX" && channel != "I2C") {
        return kStatusDone;
    }
    const char* const operation = tokens.keyword();
    if (operation == nullptr) {
        return kStatusBadArgument;
    }
    return channel == "AUX" ? runSubCommand(kAuxOperations, operation, tokens, kStatusBadArgument)
                            : runSubCommand(kI2cOperations, operation, tokens, kStatusBadArgument);
}
