#ifndef VEK_CARD_BUILTIN_CARDS_H
#define VEK_CARD_BUILTIN_CARDS_H

#include <array>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "card/card_facts.h"
#include "card/chip_facts.h"
#include "card/dp_sinks.h"
#include "card/monitor_edids.h"
#include "drivers/output_routing.h"

/// The cards that are fitted when nothing else is described. description/builtin_cards.toml describes the same ones.
namespace vek
{

namespace builtin_cards
{

constexpr BoardRecord kFirstBoard{
    .chip = kQz201.deviceId,
    .revision = 2,
    .ddcChannels = kQz201.ddcChannels,
    .name = "TV201-4G",
    .serial = "TV20121170042",
};

constexpr BoardRecord kSecondBoard{
    .chip = kQz202.deviceId,
    .revision = 1,
    .ddcChannels = kQz202.ddcChannels,
    .name = "TV202-2G",
    .serial = "TV20222030007",
};

// The decoder of zoom-video port 0 has its IICSA pin low, that of port 1 has it high and nothing at its input.
constexpr ChipSeat kEeprom{.channel = 0, .address = 0x50};
constexpr std::array<DecoderFacts, 2> kDecoders{
    {{.seat = {.channel = 0, .address = 0x24}, .signal = VideoSignal::kPal},
     {.seat = {.channel = 1, .address = 0x25}, .signal = VideoSignal::kNone}}};
constexpr ChipSeat kLtc2990Seat{.channel = 1, .address = 0x4c};
constexpr ChipSeat kLtc2991Seat{.channel = 1, .address = 0x48};
constexpr ChipSeat kIna3221Seat{.channel = 2, .address = 0x40};

// The loads of a card that shows a desktop. The resistors are of 3 and 5 milliohms.
constexpr BoardChips kFirstChips{
    .eeprom = kEeprom,
    .decoders = kDecoders,
    .ltc2990 = {{{.seat = kLtc2990Seat,
                  .rails = {{{.microvolts = 903'000, .milliamperes = 18'400, .milliohms = 3},     // core
                             {.microvolts = 1'352'000, .milliamperes = 7'250, .milliohms = 3}}},  // video memory
                  .supply = 3'300'000,
                  .temperature = 41'500}}},
    .ltc2991 = {{{.seat = kLtc2991Seat,
                  .rails = {{{.microvolts = 3'310'000, .milliamperes = 1'260, .milliohms = 5},  // display outputs
                             {.microvolts = 1'806'000, .milliamperes = 2'420, .milliohms = 5},  // memory interface
                             {.microvolts = 1'204'000, .milliamperes = 1'880, .milliohms = 5},  // PCI Express PHY
                             {.microvolts = 951'000, .milliamperes = 3'100, .milliohms = 5}}},  // other logic
                  .supply = 3'300'000,
                  .temperature = 41'500}}},
    .ina3221 = {{{.seat = kIna3221Seat,
                  .rails = {{{.microvolts = 12'080'000, .milliamperes = 2'160, .milliohms = 5},      // slot, 12 V
                             {.microvolts = 12'130'000, .milliamperes = 1'740, .milliohms = 5},      // power connector
                             {.microvolts = 3'328'000, .milliamperes = 1'120, .milliohms = 5}}}}}},  // slot, 3.3 V
};

constexpr BoardChips kSecondChips{
    .eeprom = kEeprom,
    .decoders = kDecoders,
    .ltc2990 = {{{.seat = kLtc2990Seat,
                  .rails = {{{.microvolts = 884'000, .milliamperes = 9'650, .milliohms = 3},
                             {.microvolts = 1'203'000, .milliamperes = 3'840, .milliohms = 3}}},
                  .supply = 3'300'000,
                  .temperature = 36'250}}},
    .ltc2991 = {{{.seat = kLtc2991Seat,
                  .rails = {{{.microvolts = 3'296'000, .milliamperes = 720, .milliohms = 5},
                             {.microvolts = 1'797'000, .milliamperes = 1'310, .milliohms = 5},
                             {.microvolts = 1'198'000, .milliamperes = 1'040, .milliohms = 5},
                             {.microvolts = 902'000, .milliamperes = 1'570, .milliohms = 5}}},
                  .supply = 3'300'000,
                  .temperature = 36'250}}},
    .ina3221 = {{{.seat = kIna3221Seat,
                  .rails = {{{.microvolts = 12'040'000, .milliamperes = 1'480, .milliohms = 5},
                             {.microvolts = 0, .milliamperes = 0, .milliohms = 5},  // there is no power connector
                             {.microvolts = 3'304'000, .milliamperes = 640, .milliohms = 5}}}}}},
};

using Route = std::pair<DisplayOutput, std::uint32_t>;

/// A routing with some outputs switched on, each fed by the display controller beside it.
constexpr std::uint32_t routingOf(std::initializer_list<Route> routes)
{
    std::uint32_t routing = 0;
    for (const auto& [output, controller] : routes) {
        routing = output_routing::with(routing, output, controller);
    }
    return routing;
}

// What has a display is on. The eDP panel shows the picture of the other DisplayPort output.
constexpr std::uint32_t kFirstRouting = routingOf({{DisplayOutput::kHdmi0, 0},
                                                   {DisplayOutput::kHdmi1, 1},
                                                   {DisplayOutput::kDp0, 2},
                                                   {DisplayOutput::kDp1, 2},
                                                   {DisplayOutput::kVga, 3}});
constexpr std::uint32_t kSecondRouting = routingOf({{DisplayOutput::kHdmi0, 0}, {DisplayOutput::kDp0, 1}});

constexpr AttachedMonitor showing(std::span<const std::uint8_t> edid)
{
    return {.attached = true, .edid = edid};
}

}  // namespace builtin_cards

inline constexpr CardFacts kFirstBuiltinCard{
    .chip = kQz201,
    .board = builtin_cards::kFirstBoard,
    .chips = builtin_cards::kFirstChips,
    .monitors = {builtin_cards::showing(kMonitor1080p), builtin_cards::showing(kMonitor2160p), AttachedMonitor{},
                 builtin_cards::showing(kMonitorSxga)},
    .sinks = {kDpMonitorQhd, kEdpPanel},
    .routing = builtin_cards::kFirstRouting,
};

inline constexpr CardFacts kSecondBuiltinCard{
    .chip = kQz202,
    .board = builtin_cards::kSecondBoard,
    .chips = builtin_cards::kSecondChips,
    .monitors = {builtin_cards::showing(kMonitorWuxga), AttachedMonitor{}, AttachedMonitor{}, AttachedMonitor{}},
    .sinks = {kDpMonitorWuxga, kNoDpSink},
    .routing = builtin_cards::kSecondRouting,
};

}  // namespace vek

#endif
