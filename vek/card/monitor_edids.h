#ifndef VEK_CARD_MONITOR_EDIDS_H
#define VEK_CARD_MONITOR_EDIDS_H

#include "card/monitor_edid_builder.h"

/// The displays that are attached to the simulated cards.
namespace vek
{

namespace monitor_edid
{

/// In EDID 1.3, which HDMI asks for: RGB colour, sRGB is the default colour space, the first timing is preferred.
constexpr std::uint8_t kDigital13 = 0x80;
constexpr std::uint8_t kFeatures13 = 0x0e;

/// In EDID 1.4: DVI, 8 bits a colour; sRGB is the default colour space, the first timing is the native one.
constexpr std::uint8_t kDigital14Dvi = 0xa1;
constexpr std::uint8_t kFeatures14 = 0x06;

/// 720x400 at 70 Hz, 640x480 at 60 and 75 Hz, 800x600 at 60 and 75 Hz, 1024x768 at 60 and 75 Hz, 1280x1024 at 75 Hz.
constexpr std::array<std::uint8_t, 3> kEstablished{0xa5, 0x4b, 0x00};

/// Underscan, basic audio, YCbCr 4:4:4 and 4:2:2, one native timing.
constexpr std::uint8_t kCtaFlags = 0xf1;

/// Selectable quantisation ranges, always underscanned.
constexpr std::initializer_list<std::uint8_t> kVideoCapability{0x00, 0xca};

constexpr Size k24Inch16to9{527, 296};
constexpr Size k27Inch16to9{597, 336};
constexpr Size k24Inch16to10{518, 324};
constexpr Size k19Inch5to4{376, 301};

}  // namespace monitor_edid

/// A 24-inch HDMI monitor, 1920x1080: a base block and a CTA-861 block.
inline constexpr auto kMonitor1080p = [] {
    using namespace monitor_edid;
    return edidOf(baseBlock({
                      .maker = "TVA",
                      .product = 0x2408,
                      .serialNumber = 0,
                      .week = 14,
                      .year = 2021,
                      .minorVersion = 3,
                      .videoInput = kDigital13,
                      .size = k24Inch16to9,
                      .features = kFeatures13,
                      .establishedTimings = kEstablished,
                      .standardTimings = {standardTiming(1280, AspectRatio::k5to4, 60),
                                          standardTiming(1680, AspectRatio::k16to10, 60),
                                          standardTiming(1600, AspectRatio::k16to9, 60)},
                      .preferred = k1080p60,
                      .limits = {.minHz = 48, .maxHz = 76, .minKhz = 30, .maxKhz = 84, .maxMhz = 170},
                      .name = "Vista 24H",
                      .serial = "VH21140241",
                      .extensions = 1,
                  }),
                  CtaExtension(kCtaFlags)
                      // 1080p60, 1080p50, 1080i60, 720p60, 720p50, 576p50, 480p60, 640x480.
                      .dataBlock(kCtaVideo, {0x10, 0x1f, 0x05, 0x04, 0x13, 0x12, 0x03, 0x01})
                      // LPCM, two channels, 32, 44.1 and 48 kHz, 16, 20 and 24 bits.
                      .dataBlock(kCtaAudio, {0x09, 0x07, 0x07})
                      .dataBlock(kCtaSpeaker, {0x01, 0x00, 0x00})
                      // HDMI: physical address 1.0.0.0, 165 MHz.
                      .dataBlock(kCtaVendor, {0x03, 0x0c, 0x00, 0x10, 0x00, 0x00, 0x21})
                      .dataBlock(kCtaExtended, kVideoCapability)
                      .timing(k720p60, k24Inch16to9)
                      .finish());
}();

/// A 27-inch monitor, 3840x2160: a base block, a block map, a CTA-861 and a DisplayID block.
inline constexpr auto kMonitor2160p = [] {
    using namespace monitor_edid;
    return edidOf(baseBlock({
                      .maker = "TVA",
                      .product = 0x2716,
                      .serialNumber = 0,
                      .week = 32,
                      .year = 2023,
                      .minorVersion = 3,
                      .videoInput = kDigital13,
                      .size = k27Inch16to9,
                      .features = kFeatures13,
                      .establishedTimings = kEstablished,
                      .standardTimings = {standardTiming(1920, AspectRatio::k16to9, 60),
                                          standardTiming(1680, AspectRatio::k16to10, 60),
                                          standardTiming(1280, AspectRatio::k5to4, 60)},
                      .preferred = k2160p60,
                      .limits = {.minHz = 29, .maxHz = 76, .minKhz = 30, .maxKhz = 140, .maxMhz = 600},
                      .name = "Vista 27U",
                      .serial = "VU23320077",
                      .extensions = 3,
                  }),
                  blockMap({0x02, 0x70}),
                  CtaExtension(kCtaFlags)
                      // 2160p60, 2160p50, 2160p30, 1080p60, 1080p50, 720p60, 480p60, 640x480.
                      .dataBlock(kCtaVideo, {0x61, 0x60, 0x5f, 0x10, 0x1f, 0x04, 0x03, 0x01})
                      // LPCM, eight channels, 32 to 192 kHz, 16, 20 and 24 bits.
                      .dataBlock(kCtaAudio, {0x0f, 0x7f, 0x07})
                      .dataBlock(kCtaSpeaker, {0x4f, 0x00, 0x00})
                      // HDMI: physical address 2.0.0.0, 36 and 30 bits a pixel, 300 MHz.
                      .dataBlock(kCtaVendor, {0x03, 0x0c, 0x00, 0x20, 0x00, 0x38, 0x3c})
                      // HDMI Forum: version 1, 600 MHz, SCDC with read requests.
                      .dataBlock(kCtaVendor, {0xd8, 0x5d, 0xc4, 0x01, 0x78, 0xc0, 0x00})
                      .dataBlock(kCtaExtended, kVideoCapability)
                      // Colorimetry: xvYCC601, xvYCC709, BT.2020 YCC and RGB.
                      .dataBlock(kCtaExtended, {0x05, 0xc3, 0x00})
                      // HDR static metadata: traditional gamma, SMPTE ST 2084 and HLG; 497, 265 and 0.07 cd/m2.
                      .dataBlock(kCtaExtended, {0x06, 0x0d, 0x01, 0x6a, 0x4d, 0x1f})
                      .timing(k1080p60, k27Inch16to9)
                      .finish(),
                  DisplayIdExtension({.maker = "TVA", .product = 0x2716, .week = 32, .year = 2023, .name = "Vista 27U"})
                      // Display parameters: 597.0 by 336.0 mm, 3840 by 2160 pixels, gamma 2.2, 16:9, 8 bits a colour.
                      .dataBlock(0x01, {0x52, 0x17, 0x20, 0x0d, 0x00, 0x0f, 0x70, 0x08, 0x00, 120, 78, 0x77})
                      // Interface: one HDMI link; 8 bits a colour in RGB, YCbCr 4:4:4 and 4:2:2.
                      .dataBlock(0x0f, {0x71, 0x00, 0x02, 0x02, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00})
                      .timing(k2160p60, true)
                      .timing(k1440p60, false)
                      .finish());
}();

/// A 19-inch DVI monitor, 1280x1024: a base block alone.
inline constexpr auto kMonitorSxga = [] {
    using namespace monitor_edid;
    return edidOf(baseBlock({
        .maker = "OFD",
        .product = 0x1905,
        .serialNumber = 7719,
        .week = 50,
        .year = 2009,
        .minorVersion = 4,
        .videoInput = kDigital14Dvi,
        .size = k19Inch5to4,
        .features = kFeatures14,
        .establishedTimings = kEstablished,
        .standardTimings = {standardTiming(1280, AspectRatio::k5to4, 60), standardTiming(1152, AspectRatio::k4to3, 75)},
        .preferred = k1280x1024at60,
        .limits = {.minHz = 55, .maxHz = 76, .minKhz = 30, .maxKhz = 81, .maxMhz = 140},
        .name = "Desk 19S",
        .serial = "D19S007719",
        .extensions = 0,
    }));
}();

/// A 24-inch HDMI monitor, 1920x1200: a base block and a CTA-861 block.
inline constexpr auto kMonitorWuxga = [] {
    using namespace monitor_edid;
    return edidOf(baseBlock({
                      .maker = "OFD",
                      .product = 0x2412,
                      .serialNumber = 0,
                      .week = 8,
                      .year = 2017,
                      .minorVersion = 3,
                      .videoInput = kDigital13,
                      .size = k24Inch16to10,
                      .features = kFeatures13,
                      .establishedTimings = kEstablished,
                      .standardTimings = {standardTiming(1920, AspectRatio::k16to9, 60),
                                          standardTiming(1600, AspectRatio::k16to9, 60),
                                          standardTiming(1280, AspectRatio::k5to4, 60)},
                      .preferred = k1920x1200at60,
                      .limits = {.minHz = 50, .maxHz = 76, .minKhz = 30, .maxKhz = 94, .maxMhz = 170},
                      .name = "Desk 24W",
                      .serial = "D24W051803",
                      .extensions = 1,
                  }),
                  CtaExtension(kCtaFlags)
                      // 1080p60, 1080p50, 720p60, 720p50, 480p60, 640x480.
                      .dataBlock(kCtaVideo, {0x10, 0x1f, 0x04, 0x13, 0x03, 0x01})
                      // LPCM, two channels, 32, 44.1 and 48 kHz, 16 bits.
                      .dataBlock(kCtaAudio, {0x09, 0x07, 0x01})
                      .dataBlock(kCtaSpeaker, {0x01, 0x00, 0x00})
                      // HDMI: physical address 1.0.0.0, 165 MHz.
                      .dataBlock(kCtaVendor, {0x03, 0x0c, 0x00, 0x10, 0x00, 0x00, 0x21})
                      .dataBlock(kCtaExtended, kVideoCapability)
                      .timing(k1080p60, k24Inch16to10)
                      .finish());
}();

}  // namespace vek

#endif
