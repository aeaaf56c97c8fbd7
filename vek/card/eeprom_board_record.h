#ifndef VEK_CARD_EEPROM_BOARD_RECORD_H
#define VEK_CARD_EEPROM_BOARD_RECORD_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "card/eeprom_24c02.h"

namespace vek
{

/// Characters of a text in the record.
constexpr std::size_t kMostBoardText = 16;

/// What the maker writes into a board's EEPROM, from address 0:
///
///     0x00   4  "BRD1"
///     0x04   2  chip, as its PCI device id, the low byte first
///     0x06   1  board revision
///     0x07   1  number of DDC channels
///     0x08  16  name of the board, filled up with NULs
///     0x18  16  serial number, filled up with NULs
///     0x28   7  0
///     0x2f   1  makes the sum of the 48 bytes 0 modulo 256
///
/// The rest is free, and erased: 0xff.
struct BoardRecord {
    std::uint16_t chip;
    std::uint8_t revision;
    std::uint8_t ddcChannels;
    std::string_view name;
    std::string_view serial;
};

/// The contents of the EEPROM of a new board. Texts of more than 16 characters are cut.
constexpr Eeprom24c02::Contents boardEepromWith(const BoardRecord& record)
{
    constexpr std::size_t kRecordSize = 0x30;
    Eeprom24c02::Contents contents{};
    std::fill(contents.begin() + kRecordSize, contents.end(), std::uint8_t{0xff});
    const auto put = [&contents](std::size_t offset, std::string_view text) {
        std::size_t at = offset;
        for (const char character : text.substr(0, kMostBoardText)) {
            contents[at++] = static_cast<std::uint8_t>(character);
        }
    };
    put(0x00, "BRD1");
    contents[0x04] = static_cast<std::uint8_t>(record.chip);
    contents[0x05] = static_cast<std::uint8_t>(record.chip >> 8);
    contents[0x06] = record.revision;
    contents[0x07] = record.ddcChannels;
    put(0x08, record.name);
    put(0x18, record.serial);
    unsigned sum = 0;
    for (std::size_t at = 0; at < kRecordSize; ++at) {
        sum += contents[at];
    }
    contents[kRecordSize - 1] = static_cast<std::uint8_t>(-sum);
    return contents;
}

}  // namespace vek

#endif
