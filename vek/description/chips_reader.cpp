#include "description/chips_reader.h"

#include <algorithm>
#include <array>

#include "drivers/ina3221.h"
#include "drivers/ltc2990.h"
#include "drivers/ltc2991.h"
#include "drivers/saa7111a.h"

namespace vek
{
namespace
{

enum class ChipKind : std::uint8_t { kEeprom, kDecoder, kLtc2990, kLtc2991, kIna3221 };

constexpr std::array<std::string_view, 5> kKindNames{"24C02", "SAA7111A", "LTC2990", "LTC2991", "INA3221"};

/// The addresses that the pins of each kind choose from.
constexpr std::array<Range, kKindNames.size()> kAddresses{{{0x50, 0x57},
                                                           {saa7111a::kAddress, saa7111a::kAddress + 1},
                                                           {ltc2990::kFirstAddress, ltc2990::kFirstAddress + 3},
                                                           {ltc2991::kFirstAddress, ltc2991::kFirstAddress + 7},
                                                           {ina3221::kAddress, ina3221::kAddress + 3}}};

constexpr std::array<std::string_view, 3> kSignals{"none", "PAL", "NTSC"};

constexpr std::size_t kMostChips = 1 + BoardChips::kDecoders + 3 * BoardChips::kMostMonitors;
constexpr std::int32_t kMicro = 1'000'000;
constexpr std::int32_t kMilli = 1'000;

/// The chips of a card as they are read.
class ChipsReader
{
public:
    explicit ChipsReader(BoardChips& chips) : chips_(chips) {}

    void read(TableReader& chip);

private:
    struct Taken {
        std::int64_t channel;
        std::int64_t address;
        unsigned line;
    };

    std::optional<ChipSeat> readSeat(TableReader& chip, ChipKind kind);
    void readDecoder(TableReader& chip, const ChipSeat& seat);
    template <std::size_t Rails>
    static void readLtc299x(TableReader& chip, const ChipSeat& seat,
                            std::array<Ltc299xFacts<Rails>, BoardChips::kMostMonitors>& monitors);
    void readIna3221(TableReader& chip, const ChipSeat& seat);

    BoardChips& chips_;
    std::vector<Taken> taken_;
};

std::optional<ChipSeat> ChipsReader::readSeat(TableReader& chip, ChipKind kind)
{
    const Range addresses = kAddresses[static_cast<std::size_t>(kind)];
    const std::optional<std::int64_t> channel = chip.integer("channel", {0, BoardChips::kChannels - 1});
    const std::optional<std::int64_t> address = chip.integer("address", {0, 0x7f});
    chip.require("channel");
    chip.require("address");
    const bool dead = !chip.boolean("answers").value_or(true);
    if (!channel || !address) {
        return std::nullopt;
    }
    if (*address < addresses.least || *address > addresses.most) {
        chip.mistake("address", "has to be from " + inHex(addresses.least) + " to " + inHex(addresses.most) + ", not " +
                                    inHex(*address));
        return std::nullopt;
    }
    const auto same = std::find_if(taken_.begin(), taken_.end(), [&](const Taken& other) {
        return other.channel == *channel && other.address == *address;
    });
    if (same != taken_.end()) {
        chip.mistake("address", "is that of another chip on the channel, in line " + std::to_string(same->line));
        return std::nullopt;
    }
    taken_.push_back({*channel, *address, chip.line()});
    return ChipSeat{
        .channel = static_cast<std::uint8_t>(*channel), .address = static_cast<std::uint8_t>(*address), .dead = dead};
}

template <std::size_t Rails>
void readRails(TableReader& chip, std::array<MonitoredRail, Rails>& rails)
{
    std::vector<TableReader> readers = chip.tables("rails", Rails);
    for (std::size_t number = 0; number < readers.size(); ++number) {
        TableReader& rail = readers[number];
        for (const char* const key : {"volts", "amperes", "milliohms"}) {
            rail.require(key);
        }
        rails[number] = {.microvolts = rail.scaled("volts", {0, 40}, kMicro).value_or(0),
                         .milliamperes = rail.scaled("amperes", {-200, 200}, kMilli).value_or(0),
                         .milliohms = static_cast<std::int32_t>(rail.integer("milliohms", {0, 1000}).value_or(0))};
        rail.finish();
    }
}

/// The first place for a chip that is free; without one, a mistake and null.
template <typename Facts, std::size_t Most>
Facts* freePlace(const TableReader& chip, std::array<Facts, Most>& places)
{
    const auto place =
        std::find_if(places.begin(), places.end(), [](const Facts& facts) { return !facts.seat.fitted(); });
    if (place == places.end()) {
        chip.mistake("chip", "a card has " + std::to_string(Most) + " of this kind at most");
        return nullptr;
    }
    return &*place;
}

template <std::size_t Rails>
void ChipsReader::readLtc299x(TableReader& chip, const ChipSeat& seat,
                              std::array<Ltc299xFacts<Rails>, BoardChips::kMostMonitors>& monitors)
{
    constexpr std::int32_t kSupply = 3'300'000;
    constexpr std::int32_t kTemperature = 25'000;
    Ltc299xFacts<Rails>* const facts = freePlace(chip, monitors);
    if (facts != nullptr) {
        facts->seat = seat;
        readRails(chip, facts->rails);
        facts->supply = chip.scaled("supply", {0, 6}, kMicro).value_or(kSupply);
        facts->temperature = chip.scaled("temperature", {-55, 150}, kMilli).value_or(kTemperature);
        chip.finish();
    }
}

void ChipsReader::readIna3221(TableReader& chip, const ChipSeat& seat)
{
    Ina3221Facts* const facts = freePlace(chip, chips_.ina3221);
    if (facts != nullptr) {
        facts->seat = seat;
        readRails(chip, facts->rails);
        chip.finish();
    }
}

void ChipsReader::readDecoder(TableReader& chip, const ChipSeat& seat)
{
    const std::optional<std::int64_t> port = chip.integer("port", {0, BoardChips::kDecoders - 1});
    const std::size_t signal = chip.choice("signal", kSignals).value_or(0);
    chip.require("port");
    chip.finish();
    if (!port) {
        return;
    }
    DecoderFacts& decoder = chips_.decoders[static_cast<std::size_t>(*port)];
    if (decoder.seat.fitted()) {
        chip.mistake("port", "another decoder feeds this port");
        return;
    }
    decoder = {.seat = seat, .signal = static_cast<VideoSignal>(signal)};
}

void ChipsReader::read(TableReader& chip)
{
    const std::optional<std::size_t> kind = chip.choice("chip", kKindNames);
    chip.require("chip");
    if (!kind) {
        return;
    }
    const std::optional<ChipSeat> seat = readSeat(chip, static_cast<ChipKind>(*kind));
    if (!seat) {
        return;
    }
    switch (static_cast<ChipKind>(*kind)) {
        case ChipKind::kEeprom:
            if (chips_.eeprom.fitted()) {
                chip.mistake("chip", "a card has 1 of this kind at most");
            }
            chips_.eeprom = *seat;
            chip.finish();
            break;
        case ChipKind::kDecoder:
            readDecoder(chip, *seat);
            break;
        case ChipKind::kLtc2990:
            readLtc299x(chip, *seat, chips_.ltc2990);
            break;
        case ChipKind::kLtc2991:
            readLtc299x(chip, *seat, chips_.ltc2991);
            break;
        case ChipKind::kIna3221:
            readIna3221(chip, *seat);
            break;
    }
}

}  // namespace

void readChips(TableReader& card, BoardChips& chips)
{
    ChipsReader reader(chips);
    for (TableReader& chip : card.tables("i2c", kMostChips)) {
        reader.read(chip);
    }
}

}  // namespace vek
