#ifndef VEK_CARD_DP_SINKS_H
#define VEK_CARD_DP_SINKS_H

#include <cstdint>

#include "card/dp_sink.h"
#include "card/monitor_edid_builder.h"
#include "card/monitor_edids.h"

/// The DisplayPort sinks that are attached to the simulated cards.
namespace vek
{

namespace monitor_edid
{

/// In EDID 1.4: DisplayPort, 8 bits a colour.
constexpr std::uint8_t kDigital14Dp = 0xa5;

/// Continuous frequencies are not supported; RGB and YCbCr 4:4:4 and 4:2:2; the first timing is the native one.
constexpr std::uint8_t kFeatures14Ycbcr = 0x1a;

/// Basic audio, YCbCr 4:4:4 and 4:2:2, one native timing.
constexpr std::uint8_t kCtaFlagsDp = 0x71;

constexpr Size k15Inch16to9{344, 194};

/// With reduced blanking.
constexpr Timing k1080p60Reduced{138500, {1920, 48, 32, 160, true}, {1080, 3, 5, 31, false}};

}  // namespace monitor_edid

/// A 27-inch monitor, 2560x1440: a base block, a block map, a CTA-861 and a DisplayID block.
inline constexpr auto kDpMonitorQhdEdid = [] {
    using namespace monitor_edid;
    return edidOf(baseBlock({
                      .maker = "TVA",
                      .product = 0x2709,
                      .serialNumber = 0,
                      .week = 21,
                      .year = 2022,
                      .minorVersion = 4,
                      .videoInput = kDigital14Dp,
                      .size = k27Inch16to9,
                      .features = kFeatures14Ycbcr,
                      .establishedTimings = kEstablished,
                      .standardTimings = {standardTiming(1920, AspectRatio::k16to9, 60),
                                          standardTiming(1680, AspectRatio::k16to10, 60),
                                          standardTiming(1280, AspectRatio::k5to4, 60)},
                      .preferred = k1440p60,
                      .limits = {.minHz = 48, .maxHz = 76, .minKhz = 30, .maxKhz = 114, .maxMhz = 300},
                      .name = "Vista 27Q",
                      .serial = "VQ22210118",
                      .extensions = 3,
                  }),
                  blockMap({0x02, 0x70}),
                  CtaExtension(kCtaFlagsDp)
                      // 1080p60, 1080p50, 720p60, 720p50, 480p60, 640x480.
                      .dataBlock(kCtaVideo, {0x10, 0x1f, 0x04, 0x13, 0x03, 0x01})
                      // LPCM, two channels, 32, 44.1 and 48 kHz, 16, 20 and 24 bits.
                      .dataBlock(kCtaAudio, {0x09, 0x07, 0x07})
                      .dataBlock(kCtaSpeaker, {0x01, 0x00, 0x00})
                      .timing(k1080p60, k27Inch16to9)
                      .finish(),
                  DisplayIdExtension({.maker = "TVA", .product = 0x2709, .week = 21, .year = 2022, .name = "Vista 27Q"})
                      // Display parameters: 597.0 by 336.0 mm, 2560 by 1440 pixels, gamma 2.2, 16:9, 8 bits a colour.
                      .dataBlock(0x01, {0x52, 0x17, 0x20, 0x0d, 0x00, 0x0a, 0xa0, 0x05, 0x00, 120, 78, 0x77})
                      .timing(k1440p60, true)
                      .timing(k1080p60, false)
                      .finish());
}();

/// A 24-inch monitor, 1920x1200: a base block and a CTA-861 block.
inline constexpr auto kDpMonitorWuxgaEdid = [] {
    using namespace monitor_edid;
    return edidOf(baseBlock({
                      .maker = "OFD",
                      .product = 0x2413,
                      .serialNumber = 0,
                      .week = 40,
                      .year = 2014,
                      .minorVersion = 4,
                      .videoInput = kDigital14Dp,
                      .size = k24Inch16to10,
                      .features = kFeatures14Ycbcr,
                      .establishedTimings = kEstablished,
                      .standardTimings = {standardTiming(1600, AspectRatio::k16to10, 60),
                                          standardTiming(1280, AspectRatio::k5to4, 60)},
                      .preferred = k1920x1200at60,
                      .limits = {.minHz = 50, .maxHz = 76, .minKhz = 30, .maxKhz = 94, .maxMhz = 170},
                      .name = "Desk 24P",
                      .serial = "D24P140077",
                      .extensions = 1,
                  }),
                  CtaExtension(kCtaFlagsDp)
                      // 1080p60, 720p60, 480p60, 640x480.
                      .dataBlock(kCtaVideo, {0x10, 0x04, 0x03, 0x01})
                      // LPCM, two channels, 32, 44.1 and 48 kHz, 16 bits.
                      .dataBlock(kCtaAudio, {0x09, 0x07, 0x01})
                      .dataBlock(kCtaSpeaker, {0x01, 0x00, 0x00})
                      .timing(k1080p60, k24Inch16to10)
                      .finish());
}();

/// A 15.6-inch eDP panel, 1920x1080: a base block alone.
inline constexpr auto kEdpPanelEdid = [] {
    using namespace monitor_edid;
    return edidOf(baseBlock({
        .maker = "TVA",
        .product = 0x156d,
        .serialNumber = 0,
        .week = 5,
        .year = 2021,
        .minorVersion = 4,
        .videoInput = kDigital14Dp,
        .size = k15Inch16to9,
        .features = 0x02,
        .establishedTimings = {},
        .standardTimings = {},
        .preferred = k1080p60Reduced,
        .limits = {.minHz = 48, .maxHz = 61, .minKhz = 53, .maxKhz = 68, .maxMhz = 150},
        .name = "Panel 15F",
        .serial = "P15F050931",
        .extensions = 0,
    }));
}();

inline constexpr DpSinkFacts kDpMonitorQhd{
    .revision = 0x12,
    .maxRate = dpcd::kHbr2,
    .maxLanes = 4,
    .trainingPattern3 = true,
    .panel = false,
    .cableRate = dpcd::kHbr2,
    .swing = 2,
    .preEmphasis = 1,
    .oui = {0x02, 0x54, 0x56},
    .name = {'V', 'i', 's', 't', '2', '7'},
    .edid = kDpMonitorQhdEdid,
};

inline constexpr DpSinkFacts kDpMonitorWuxga{
    .revision = 0x11,
    .maxRate = dpcd::kHbr,
    .maxLanes = 2,
    .trainingPattern3 = false,
    .panel = false,
    .cableRate = dpcd::kHbr,
    .swing = 1,
    .preEmphasis = 0,
    .oui = {0x02, 0x54, 0x56},
    .name = {'D', 'e', 's', 'k', '2', '4'},
    .edid = kDpMonitorWuxgaEdid,
};

inline constexpr DpSinkFacts kEdpPanel{
    .revision = 0x12,
    .maxRate = dpcd::kHbr,
    .maxLanes = 2,
    .trainingPattern3 = false,
    .panel = true,
    .cableRate = dpcd::kHbr,
    .swing = 0,
    .preEmphasis = 1,
    .oui = {0x02, 0x54, 0x56},
    .name = {'P', 'a', 'n', 'l', '1', '5'},
    .edid = kEdpPanelEdid,
};

inline constexpr DpSinkFacts kNoDpSink{};

}  // namespace vek

#endif
