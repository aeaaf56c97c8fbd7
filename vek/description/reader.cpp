#include "description/reader.h"

#include <algorithm>
#include <array>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "card/sizes.h"
#include "description/chips_reader.h"
#include "description/described_files.h"
#include "description/mistakes.h"
#include "description/monitor_reader.h"
#include "description/table_reader.h"
#include "drivers/sensors.h"
#include "vek.h"

namespace vek
{
namespace
{

/// Room for a description many times as long as that of four cards.
constexpr std::size_t kMostBytes = 256 * kKiB;

/// Keys with dots in them make tables in tables, without a limit of the parser's own.
constexpr std::size_t kMostDots = 64;

constexpr std::size_t kMostFileName = 4095;

constexpr std::array<std::string_view, 2> kChips{"QZ201", "QZ202"};
constexpr std::array<std::string_view, 3> kMcuStates{"running", "held-in-reset", "no-firmware"};
constexpr std::array<std::string_view, 3> kMemories{"registers", "video-memory", "flash"};
constexpr std::array<std::string_view, 4> kStuckBitKeys{"memory", "address", "bit", "value"};

void readBoard(TableReader& card, DescribedCard& into)
{
    constexpr std::int64_t kMostRevision = 255;
    BoardRecord& record = into.facts.board;
    record = {.chip = into.facts.chip.deviceId,
              .revision = 0,
              .ddcChannels = into.facts.chip.ddcChannels,
              .name = {},
              .serial = {}};
    std::optional<TableReader> board = card.table("board");
    if (!board) {
        return;
    }
    const auto keep = [](const std::optional<std::string>& text, std::array<char, kMostBoardText>& room) {
        const std::size_t size = text ? text->copy(room.data(), room.size()) : 0;
        return std::string_view(room.data(), size);
    };
    record.name = keep(board->text("name", kMostBoardText), into.name);
    record.serial = keep(board->text("serial", kMostBoardText), into.serial);
    record.revision = static_cast<std::uint8_t>(board->integer("revision", {0, kMostRevision}).value_or(0));
    board->finish();
}

void readSensors(TableReader& card, SensorFaults& faults)
{
    constexpr Range kSites{0, sensor_unit::kMaxSites - 1};
    std::optional<TableReader> sensors = card.table("sensors");
    if (!sensors) {
        return;
    }
    faults = {.temperatures = sensors->bits("dead_temperatures", kSites),
              .voltages = sensors->bits("dead_voltages", kSites),
              .processes = sensors->bits("dead_process_monitors", kSites)};
    sensors->finish();
}

void readMcu(TableReader& card, McuCondition& condition)
{
    std::optional<TableReader> mcu = card.table("mcu");
    if (mcu) {
        condition = static_cast<McuCondition>(mcu->choice("state", kMcuStates).value_or(0));
        mcu->finish();
    }
}

void readFan(TableReader& card, bool& turns)
{
    std::optional<TableReader> fan = card.table("fan");
    if (fan) {
        turns = fan->boolean("turns").value_or(true);
        fan->finish();
    }
}

void readFlash(TableReader& card, std::string_view description, DescribedCard& into)
{
    std::optional<TableReader> flash = card.table("flash");
    if (!flash) {
        return;
    }
    const std::optional<std::string> image = flash->text("image", kMostFileName);
    flash->finish();
    if (!image) {
        return;
    }
    const auto [error, size] = readFile(nameBeside(description, *image), into.flashImage);
    if (error != 0) {
        flash->unreadable("image", reasonFor(error));
    } else if (size > into.flashImage.size()) {
        flash->mistake("image", "the file has to have 2 MiB at most");
    } else {
        into.facts.flashImage = std::span(into.flashImage).first(size);
    }
}

std::int64_t sizeOf(StuckMemory memory, const ChipFacts& chip)
{
    switch (memory) {
        case StuckMemory::kRegisters:
            return kRegisterRegionSize;
        case StuckMemory::kVideoMemory:
            return static_cast<std::int64_t>(chip.videoMemorySize);
        default:
            return spi_nor::kSize;
    }
}

std::optional<StuckBit> readStuckBit(TableReader& table, const ChipFacts& chip)
{
    for (const std::string_view key : kStuckBitKeys) {
        table.require(key);
    }
    const std::optional<std::size_t> memory = table.choice("memory", kMemories);
    const auto which = static_cast<StuckMemory>(memory.value_or(0));
    const std::optional<std::int64_t> address = table.integer("address", {0, sizeOf(which, chip) - 1});
    const std::optional<std::int64_t> bit = table.integer("bit", {0, 7});
    const std::optional<std::int64_t> value = table.integer("value", {0, 1});
    table.finish();
    if (!memory || !address || !bit || !value) {
        return std::nullopt;
    }
    return StuckBit{.memory = which,
                    .address = static_cast<std::uint64_t>(*address),
                    .bit = static_cast<std::uint8_t>(*bit),
                    .value = *value == 1};
}

void readStuckBits(TableReader& card, DescribedCard& into)
{
    std::size_t count = 0;
    for (TableReader& table : card.tables("stuck_bit", kMostStuckBits)) {
        const std::optional<StuckBit> bit = readStuckBit(table, into.facts.chip);
        if (!bit) {
            continue;
        }
        const auto others = std::span(into.stuckBits).first(count);
        const bool twice = std::any_of(others.begin(), others.end(), [&](const StuckBit& other) {
            return other.memory == bit->memory && other.address == bit->address && other.bit == bit->bit;
        });
        if (twice) {
            table.mistake("bit", "is stuck already");
            continue;
        }
        into.stuckBits[count++] = *bit;
    }
    into.facts.stuckBits = std::span(into.stuckBits).first(count);
}

void readCard(TableReader& card, std::string_view description, DescribedCard& into)
{
    constexpr Range kMebibytes{64, 65'536};
    card.require("chip");
    const std::size_t chip = card.choice("chip", kChips).value_or(0);
    into.facts.chip = chip == 0 ? kQz201 : kQz202;
    const std::optional<std::int64_t> mebibytes = card.integer("video_memory_mib", kMebibytes);
    if (mebibytes) {
        into.facts.chip.videoMemorySize = static_cast<std::uint64_t>(*mebibytes) * kMiB;
    }
    readBoard(card, into);
    readMonitors(card, description, into);
    readChips(card, into.facts.chips);
    readFlash(card, description, into);
    readSensors(card, into.facts.sensors);
    readMcu(card, into.facts.mcu);
    readFan(card, into.facts.fanTurns);
    readStuckBits(card, into);
    card.finish();
}

void readCards(const toml::table& root, std::string_view description, DescribedCards& cards, Mistakes& mistakes)
{
    TableReader whole(root, "", mistakes);
    for (TableReader& card : whole.tables("card", kMostCards)) {
        readCard(card, description, cards.cards[cards.count]);
        ++cards.count;
    }
    if (!whole.has("card")) {
        mistakes.add(0, "card", "is missing: there has to be one table [[card]] for each card, 1 to 4");
    } else if (cards.count == 0) {
        whole.mistake("card", "has to have a card in it");
    }
    whole.finish();
}

/// Whether every line can be parsed without making tables in tables that use up the stack when they go.
bool isFlat(std::string_view text, Mistakes& mistakes)
{
    unsigned line = 1;
    std::size_t dots = 0;
    for (const char character : text) {
        dots += character == '.' ? 1 : 0;
        if (dots > kMostDots) {
            mistakes.add(line, "", "there may be " + std::to_string(kMostDots) + " dots in a line at most");
            return false;
        }
        if (character == '\n') {
            ++line;
            dots = 0;
        }
    }
    return true;
}

void parse(std::string_view text, std::string_view description, DescribedCards& cards, Mistakes& mistakes)
{
    if (!isFlat(text, mistakes)) {
        return;
    }
    const toml::parse_result result = toml::parse(text, std::string_view());
    if (result) {
        readCards(result.table(), description, cards, mistakes);
    } else {
        // The parser names the macro that limits nesting.
        std::string_view what = result.error().description();
        what = what.substr(0, what.find(" (TOML_"));
        mistakes.add(result.error().source().begin.line, "", what);
    }
}

void readDescription(const char* file, DescribedCards& cards, Mistakes& mistakes)
{
    std::vector<std::uint8_t> bytes(kMostBytes);
    const auto [error, size] = readFile(file, bytes);
    if (error != 0) {
        mistakes.addUnreadable(0, "", reasonFor(error));
    } else if (size > bytes.size()) {
        mistakes.add(0, "", "is too long, 256 KiB are the limit");
    } else {
        parse({reinterpret_cast<const char*>(bytes.data()), size}, file, cards, mistakes);
    }
}

}  // namespace
}  // namespace vek

// Nothing that is thrown may get out: the callers are built without exceptions.
int vekReadCardDescription(const char* file, vek::DescribedCards* cards, std::size_t size,
                           const vek::DescriptionListener* listener)
{
    if (size != sizeof(vek::DescribedCards)) {
        return VEK_BAD_ARGUMENT;
    }
    try {
        vek::Mistakes mistakes(file);
        vek::readDescription(file, *cards, mistakes);
        mistakes.tellAll(*listener);
        return mistakes.result();
    } catch (...) {
        return VEK_NO_MEMORY;
    }
}
