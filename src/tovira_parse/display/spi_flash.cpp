// The card's SPI flash: read to the screen and a file, erase, program from a file, write protection.

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "tovira_parse/files.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/heap.h"
#include "tovira_parse/hex_dump.h"
#include "tovira_parse/progress.h"
#include "tovira_parse/sub_commands.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr std::int32_t kMostShown = 256;
constexpr std::size_t kWordSize = 4;

constexpr std::size_t wholeWords(std::size_t size)
{
    return (size + kWordSize - 1) / kWordSize * kWordSize;
}

int readBytes(std::uint8_t* bytes, std::uint32_t address, std::int32_t size)
{
    const ElapsedTime elapsed("reading flash", static_cast<std::uint32_t>(size));
    return vekSpiReadBuffer(bytes, static_cast<std::int32_t>(address), size);
}

void showBeginning(std::uint32_t address, const std::uint8_t* bytes, std::int32_t size)
{
    printByte(address, bytes, std::min(size, kMostShown));
    if (size > kMostShown) {
        puts("...");
    }
}

int readFlash(Tokens& arguments)
{
    std::uint32_t address = 0;
    std::uint32_t typedSize = 0;
    arguments.number(address);
    // A sum that wraps below 0 passes: the library refuses what the flash does not hold.
    if (!arguments.number(typedSize) || typedSize == 0 ||
        static_cast<std::int32_t>(address + typedSize) > VEK_SPI_FLASH_SIZE) {
        return kStatusBadArgument;
    }
    const auto size = static_cast<std::int32_t>(typedSize);
    if (size < 0) {
        reportOutOfMemory();
        return kStatusBadCommand;
    }
    const HeapPointer<std::uint8_t> bytes = allocateBytes(wholeWords(typedSize));
    if (bytes == nullptr) {
        return kStatusBadCommand;
    }
    if (readBytes(bytes.get(), address, size) != 0) {
        return kStatusDone;
    }
    saveFile(arguments.argument(), bytes.get(), typedSize);
    showBeginning(address, bytes.get(), size);
    return kStatusDone;
}

int eraseFlash(Tokens& arguments)
{
    std::uint32_t address = 0;
    std::uint32_t size = 0;
    if (!arguments.number(address) || !arguments.number(size)) {
        return kStatusBadArgument;
    }
    const ElapsedTime elapsed("erasing flash", size);
    vekSpiErase(static_cast<std::int32_t>(address), static_cast<std::int32_t>(size));
    return kStatusDone;
}

int programFlash(Tokens& arguments)
{
    std::uint32_t typedAddress = 0;
    if (!arguments.number(typedAddress)) {
        return kStatusBadArgument;
    }
    const char* const name = arguments.argument();
    if (name == nullptr) {
        return kStatusBadArgument;
    }
    const auto address = static_cast<std::int32_t>(typedAddress);
    const std::int64_t room = std::min<std::int64_t>(std::int64_t{VEK_SPI_FLASH_SIZE} - address, INT32_MAX);
    const FileText image = readWholeFile(name, static_cast<std::size_t>(std::max<std::int64_t>(room, 0)));
    if (image.text == nullptr) {
        if (image.outOfMemory) {
            reportOutOfMemory();
            return kStatusBadCommand;
        }
        return errno == EFBIG ? kStatusBadArgument : kStatusDone;
    }
    if (static_cast<std::int64_t>(wholeWords(image.length)) > room) {
        return kStatusBadArgument;
    }
    // A file that ends within a word is not programmed, not even with that word filled up.
    if (image.size == wholeWords(image.length)) {
        const ElapsedTime elapsed("programming flash", image.size);
        vekSpiProgram(image.text.get(), address, static_cast<std::int32_t>(image.size));
    }
    return kStatusDone;
}

int protectFlash(Tokens& /*arguments*/)
{
    vekSpiProtect();
    return kStatusDone;
}

int unprotectFlash(Tokens& /*arguments*/)
{
    vekSpiUnprotect();
    return kStatusDone;
}

constexpr SubCommand<Tokens> kSubCommands[] = {
    {"READ", readFlash},    {"ERASE", eraseFlash},      {"PROGRAM", programFlash},
    {"PROT", protectFlash}, {"UNPROT", unprotectFlash},
};

}  // namespace

int doSpi(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    const char* const subCommand = tokens.keyword();
    return subCommand == nullptr ? kStatusBadArgument
                                 : runSubCommand(kSubCommands, subCommand, tokens, kStatusBadArgument);
}
