#include "description/summary.h"

#include <array>
#include <cinttypes>
#include <cstddef>
#include <cstdint>

#include "card/sizes.h"

namespace vek
{
namespace
{

void printMonitor(std::FILE* out, const char* output, std::size_t edidSize, const OutputRoute& route)
{
    std::fprintf(out, "    %-7s", output);
    if (edidSize == 0) {
        std::fputs("a monitor without an EDID, ", out);
    } else {
        std::fprintf(out, "a monitor with an EDID of %zu bytes, ", edidSize);
    }
    if (route.on) {
        std::fprintf(out, "fed by controller %u\n", route.controller);
    } else {
        std::fputs("off\n", out);
    }
}

void printSink(std::FILE* out, const DpSinkFacts& sink)
{
    constexpr std::array<std::array<char, 9>, 4> kManners{{"serves", "defers", "silent", "refuses"}};
    constexpr double kGigabits = 0.27;
    std::fprintf(out, "           %s, %u lanes at %.2f Gbit/s, cable good for %.2f Gbit/s\n",
                 sink.panel ? "panel" : "sink", sink.maxLanes, sink.maxRate * kGigabits, sink.cableRate * kGigabits);
    if (sink.manner != AuxManner::kServes || sink.deferrals != 0) {
        std::fprintf(out, "    fault: its AUX channel %s, after %u deferrals of each request\n",
                     kManners[static_cast<std::size_t>(sink.manner)].data(), sink.deferrals);
    }
}

void printMonitors(std::FILE* out, const CardFacts& facts)
{
    const ChipFacts& chip = facts.chip;
    const DisplayUnits units{.controllers = chip.controllers,
                             .hdmiOutputs = chip.hdmiOutputs,
                             .dpOutputs = chip.dpOutputs,
                             .vgaDdc = chip.vgaDdc,
                             .dvoDdc = chip.dvoDdc};
    for (std::size_t number = 0; number < kDisplayOutputs; ++number) {
        const auto output = static_cast<DisplayOutput>(number);
        const OutputRoute route = routeOf(facts.routing, output);
        if (output == DisplayOutput::kDp0 || output == DisplayOutput::kDp1) {
            const bool second = output == DisplayOutput::kDp1;
            const DpSinkFacts& sink = facts.sinks[second ? 1 : 0];
            if (sink.attached()) {
                printMonitor(out, second ? "DP-1" : "DP-0", sink.edid.size(), route);
                printSink(out, sink);
            }
            continue;
        }
        const int ddc = ddcChannelOf(units, output);
        if (ddc != kNoDdc && facts.monitors[static_cast<std::size_t>(ddc)].attached) {
            printMonitor(out, outputName(output), facts.monitors[static_cast<std::size_t>(ddc)].edid.size(), route);
        }
    }
}

void printChip(std::FILE* out, const char* name, const ChipSeat& seat)
{
    if (seat.fitted()) {
        std::fprintf(out, "    %-9s on I2C channel %u at 0x%02x%s\n", name, seat.channel, seat.address,
                     seat.dead ? ", fault: does not answer" : "");
    }
}

void printChips(std::FILE* out, const BoardChips& chips)
{
    printChip(out, "24C02", chips.eeprom);
    for (const DecoderFacts& decoder : chips.decoders) {
        printChip(out, "SAA7111A", decoder.seat);
    }
    for (const auto& monitor : chips.ltc2990) {
        printChip(out, "LTC2990", monitor.seat);
    }
    for (const auto& monitor : chips.ltc2991) {
        printChip(out, "LTC2991", monitor.seat);
    }
    for (const Ina3221Facts& monitor : chips.ina3221) {
        printChip(out, "INA3221", monitor.seat);
    }
}

void printDeadSites(std::FILE* out, const char* kind, std::uint8_t sites)
{
    for (unsigned site = 0; sites >> site != 0; ++site) {
        if ((sites >> site & 1U) != 0) {
            std::fprintf(out, "    fault: the %s of site %u is dead\n", kind, site);
        }
    }
}

void printFaults(std::FILE* out, const CardFacts& facts)
{
    constexpr std::array<std::array<char, 13>, 3> kMemories{{"registers", "video-memory", "flash"}};
    printDeadSites(out, "temperature sensor", facts.sensors.temperatures);
    printDeadSites(out, "voltage sensor", facts.sensors.voltages);
    printDeadSites(out, "process monitor", facts.sensors.processes);
    if (facts.mcu != McuCondition::kRunning) {
        std::fprintf(out, "    fault: the MCU %s\n",
                     facts.mcu == McuCondition::kNoFirmware ? "has no firmware" : "is held in reset");
    }
    if (!facts.fanTurns) {
        std::fputs("    fault: the fan does not turn\n", out);
    }
    for (const StuckBit& stuck : facts.stuckBits) {
        std::fprintf(out, "    fault: bit %u at 0x%" PRIx64 " of %s is stuck at %d\n", stuck.bit, stuck.address,
                     kMemories[static_cast<std::size_t>(stuck.memory)].data(), stuck.value ? 1 : 0);
    }
}

}  // namespace

void printSummary(std::FILE* out, const DescribedCards& cards)
{
    for (std::size_t index = 0; index < cards.count; ++index) {
        const CardFacts& facts = cards.cards[index].facts;
        const std::string_view name = facts.board.name.empty() ? "without a name" : facts.board.name;
        std::fprintf(out, "card %zu: QZ%x, %" PRIu64 " MiB of video memory, board %.*s\n", index, facts.chip.deviceId,
                     facts.chip.videoMemorySize / kMiB, static_cast<int>(name.size()), name.data());
        printMonitors(out, facts);
        printChips(out, facts.chips);
        if (!facts.flashImage.empty()) {
            std::fprintf(out, "    flash comes with %zu bytes\n", facts.flashImage.size());
        }
        printFaults(out, facts);
    }
}

}  // namespace vek
