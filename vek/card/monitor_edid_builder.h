#ifndef VEK_CARD_MONITOR_EDID_BUILDER_H
#define VEK_CARD_MONITOR_EDID_BUILDER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

/// Puts the EDIDs of the simulated displays together at compile time: VESA E-EDID 1.4 (1.3 where it says so), CTA-861,
/// DisplayID 1.3.
namespace vek::monitor_edid
{

constexpr std::size_t kBlockSize = 128;
using Block = std::array<std::uint8_t, kBlockSize>;

constexpr std::uint8_t low(unsigned value)
{
    return static_cast<std::uint8_t>(value);
}

/// The byte that makes the sum of some bytes 0 modulo 256.
constexpr std::uint8_t checksumOf(const Block& block, std::size_t from, std::size_t to)
{
    unsigned sum = 0;
    for (std::size_t at = from; at < to; ++at) {
        sum += block[at];
    }
    return low(0U - sum);
}

/// A block with its last byte set so that the block is valid.
constexpr Block sealed(Block block)
{
    block[kBlockSize - 1] = checksumOf(block, 0, kBlockSize - 1);
    return block;
}

/// One direction of a timing, in pixels or lines.
struct Axis {
    unsigned active;
    unsigned frontPorch;
    unsigned sync;
    unsigned blanking;  ///< Front porch, sync and back porch.
    bool positiveSync;
};

struct Timing {
    unsigned clockKhz;
    Axis horizontal;
    Axis vertical;
};

constexpr Timing k720p60{74250, {1280, 110, 40, 370, true}, {720, 5, 5, 30, true}};
constexpr Timing k1280x1024at60{108000, {1280, 48, 112, 408, true}, {1024, 1, 3, 42, true}};
constexpr Timing k1080p60{148500, {1920, 88, 44, 280, true}, {1080, 4, 5, 45, true}};
/// With reduced blanking.
constexpr Timing k1920x1200at60{154000, {1920, 48, 32, 160, true}, {1200, 3, 6, 35, false}};
constexpr Timing k2160p60{594000, {3840, 176, 88, 560, true}, {2160, 8, 10, 90, true}};
/// With reduced blanking.
constexpr Timing k1440p60{241500, {2560, 48, 32, 160, true}, {1440, 3, 5, 41, false}};

/// The size of a screen in millimetres.
struct Size {
    unsigned width;
    unsigned height;
};

using Descriptor = std::array<std::uint8_t, 18>;

/// A detailed timing descriptor, not interlaced, with separate digital syncs.
constexpr Descriptor detailedTiming(const Timing& timing, Size size)
{
    const auto& [clockKhz, horizontal, vertical] = timing;
    const unsigned polarities = (vertical.positiveSync ? 4U : 0U) | (horizontal.positiveSync ? 2U : 0U);
    return {
        low(clockKhz / 10),
        low(clockKhz / 10 >> 8),
        low(horizontal.active),
        low(horizontal.blanking),
        low(horizontal.active >> 8 << 4 | horizontal.blanking >> 8),
        low(vertical.active),
        low(vertical.blanking),
        low(vertical.active >> 8 << 4 | vertical.blanking >> 8),
        low(horizontal.frontPorch),
        low(horizontal.sync),
        low((vertical.frontPorch & 0xf) << 4 | (vertical.sync & 0xf)),
        low((horizontal.frontPorch >> 8 & 3) << 6 | (horizontal.sync >> 8 & 3) << 4 |
            (vertical.frontPorch >> 4 & 3) << 2 | (vertical.sync >> 4 & 3)),
        low(size.width),
        low(size.height),
        low(size.width >> 8 << 4 | size.height >> 8),
        0,
        0,
        low(0x18 | polarities),
    };
}

/// Kinds of display descriptors that hold a text.
enum class TextKind : std::uint8_t { kName = 0xfc, kSerial = 0xff };

/// A display descriptor with a text of up to 13 characters, ended by a line feed and filled up with blanks.
constexpr Descriptor textDescriptor(TextKind kind, std::string_view text)
{
    Descriptor descriptor{0, 0, 0, static_cast<std::uint8_t>(kind), 0};
    constexpr std::size_t kTextOffset = 5;
    for (std::size_t index = 0; index + kTextOffset < descriptor.size(); ++index) {
        const char filler = index == text.size() ? '\n' : ' ';
        descriptor[kTextOffset + index] = static_cast<std::uint8_t>(index < text.size() ? text[index] : filler);
    }
    return descriptor;
}

/// What a display can synchronise to.
struct Limits {
    unsigned minHz;  ///< Vertical.
    unsigned maxHz;
    unsigned minKhz;  ///< Horizontal.
    unsigned maxKhz;
    unsigned maxMhz;  ///< Pixel clock, a multiple of 10.
};

/// A range limits descriptor without a timing formula, which E-EDID 1.3 and 1.4 say in different ways.
constexpr Descriptor rangeLimits(const Limits& limits, std::uint8_t minorVersion)
{
    const std::uint8_t formula = minorVersion < 4 ? 0x00 : 0x01;
    return {0x00,
            0x00,
            0x00,
            0xfd,
            0x00,
            low(limits.minHz),
            low(limits.maxHz),
            low(limits.minKhz),
            low(limits.maxKhz),
            low(limits.maxMhz / 10),
            formula,
            '\n',
            ' ',
            ' ',
            ' ',
            ' ',
            ' ',
            ' '};
}

/// The two bytes of a standard timing.
using StandardTiming = std::array<std::uint8_t, 2>;

enum class AspectRatio : std::uint8_t { k16to10 = 0, k4to3 = 1, k5to4 = 2, k16to9 = 3 };

constexpr StandardTiming standardTiming(unsigned width, AspectRatio ratio, unsigned hz)
{
    return {low(width / 8 - 31), low(static_cast<unsigned>(ratio) << 6 | (hz - 60))};
}

/// What differs from one display's base block to the next.
struct Display {
    std::string_view maker;  ///< Three capital letters.
    std::uint16_t product;
    std::uint32_t serialNumber;  ///< 0 when the text says it.
    std::uint8_t week;
    unsigned year;
    std::uint8_t minorVersion;  ///< Of EDID 1.x.
    std::uint8_t videoInput;
    Size size;
    std::uint8_t features;
    std::array<std::uint8_t, 3> establishedTimings;
    std::initializer_list<StandardTiming> standardTimings;
    Timing preferred;
    Limits limits;
    std::string_view name;
    std::string_view serial;
    std::uint8_t extensions;
};

constexpr void put(Block& block, std::size_t offset, std::initializer_list<std::uint8_t> bytes)
{
    for (const std::uint8_t byte : bytes) {
        block[offset++] = byte;
    }
}

constexpr void put(Block& block, std::size_t offset, const Descriptor& descriptor)
{
    for (const std::uint8_t byte : descriptor) {
        block[offset++] = byte;
    }
}

/// The maker's letters, five bits each.
constexpr unsigned makerId(std::string_view letters)
{
    unsigned id = 0;
    for (const char letter : letters) {
        id = id << 5 | static_cast<unsigned>(letter - 'A' + 1);
    }
    return id;
}

/// The base block: colours of sRGB, gamma 2.2, four descriptors.
constexpr Block baseBlock(const Display& display)
{
    Block block{};
    put(block, 0, {0x00, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x00});
    const unsigned maker = makerId(display.maker);
    put(block, 8, {low(maker >> 8), low(maker), low(display.product), low(display.product >> 8U)});
    const std::uint32_t serial = display.serialNumber;
    put(block, 12, {low(serial), low(serial >> 8), low(serial >> 16), low(serial >> 24)});
    put(block, 16, {display.week, low(display.year - 1990), 1, display.minorVersion});
    put(block, 20,
        {display.videoInput, low((display.size.width + 5) / 10), low((display.size.height + 5) / 10), 120,
         display.features});
    put(block, 25, {0xee, 0x91, 0xa3, 0x54, 0x4c, 0x99, 0x26, 0x0f, 0x50, 0x54});
    put(block, 35, {display.establishedTimings[0], display.establishedTimings[1], display.establishedTimings[2]});
    std::size_t offset = 38;
    for (const StandardTiming& timing : display.standardTimings) {
        put(block, offset, {timing[0], timing[1]});
        offset += 2;
    }
    for (; offset < 54; ++offset) {
        block[offset] = 0x01;
    }
    put(block, 54, detailedTiming(display.preferred, display.size));
    put(block, 72, rangeLimits(display.limits, display.minorVersion));
    put(block, 90, textDescriptor(TextKind::kName, display.name));
    put(block, 108, textDescriptor(TextKind::kSerial, display.serial));
    block[126] = display.extensions;
    return sealed(block);
}

/// A CTA-861 extension, revision 3, in the making: data blocks first, then detailed timings.
class CtaExtension
{
public:
    /// `flags`: byte 3, underscan, audio, YCbCr and the number of native timings.
    constexpr explicit CtaExtension(std::uint8_t flags) { put(block_, 0, {0x02, 0x03, 0x04, flags}); }

    constexpr CtaExtension& dataBlock(unsigned tag, std::initializer_list<std::uint8_t> payload)
    {
        block_[end_] = low(tag << 5 | static_cast<unsigned>(payload.size()));
        put(block_, end_ + 1, payload);
        end_ += 1 + payload.size();
        block_[2] = low(static_cast<unsigned>(end_));
        return *this;
    }

    constexpr CtaExtension& timing(const Timing& timing, Size size)
    {
        put(block_, end_, detailedTiming(timing, size));
        end_ += Descriptor{}.size();
        return *this;
    }

    constexpr Block finish() const { return sealed(block_); }

private:
    Block block_{};
    std::size_t end_ = 4;
};

/// Tags of CTA-861 data blocks.
enum CtaTag : unsigned { kCtaAudio = 1, kCtaVideo = 2, kCtaVendor = 3, kCtaSpeaker = 4, kCtaExtended = 7 };

/// A block map extension (E-EDID, section 3.7.1): the tag of every extension after it.
constexpr Block blockMap(std::initializer_list<std::uint8_t> tags)
{
    Block block{0xf0};
    put(block, 1, tags);
    return sealed(block);
}

/// What a DisplayID section says of its display. A name has at most 16 characters here.
struct Product {
    std::string_view maker;  ///< Three capital letters.
    std::uint16_t product;
    std::uint8_t week;
    unsigned year;
    std::string_view name;
};

/// A DisplayID 1.3 section of a stand-alone monitor in the making.
class DisplayIdExtension
{
public:
    constexpr explicit DisplayIdExtension(const Product& product)
    {
        constexpr std::uint8_t kMonitor = 0x03;
        put(block_, 0, {0x70, 0x13, 0, kMonitor, 0x00});
        addProduct(product);
    }

    constexpr DisplayIdExtension& dataBlock(std::uint8_t tag, std::initializer_list<std::uint8_t> payload)
    {
        put(block_, end_, {tag, 0x00, low(static_cast<unsigned>(payload.size()))});
        put(block_, end_ + 3, payload);
        end_ += 3 + payload.size();
        return *this;
    }

    /// Adds a type I detailed timing.
    constexpr DisplayIdExtension& timing(const Timing& timing, bool preferred)
    {
        constexpr unsigned kAspect16to9 = 0x04;
        const unsigned clock = timing.clockKhz / 10 - 1;
        put(block_, end_, {0x03, 0x00, 20, low(clock), low(clock >> 8), low(clock >> 16)});
        block_[end_ + 6] = low(kAspect16to9 | (preferred ? 0x80U : 0U));
        addAxis(end_ + 7, timing.horizontal);
        addAxis(end_ + 15, timing.vertical);
        end_ += 23;
        return *this;
    }

    constexpr Block finish()
    {
        constexpr std::size_t kHeaderSize = 5;
        block_[2] = low(static_cast<unsigned>(end_ - kHeaderSize));
        block_[end_] = checksumOf(block_, 1, end_);
        return sealed(block_);
    }

private:
    constexpr void addProduct(const Product& product)
    {
        const auto nameSize = static_cast<unsigned>(product.name.size());
        put(block_, end_, {0x00, 0x00, low(12 + nameSize)});
        addText(end_ + 3, product.maker);
        put(block_, end_ + 6, {low(product.product), low(product.product >> 8U)});
        put(block_, end_ + 12, {product.week, low(product.year - 2000), low(nameSize)});
        addText(end_ + 15, product.name);
        end_ += 15 + nameSize;
    }

    constexpr void addText(std::size_t offset, std::string_view text)
    {
        for (const char character : text) {
            block_[offset++] = static_cast<std::uint8_t>(character);
        }
    }

    /// Four 16-bit fields, each less 1; the polarity is the highest bit of the front porch.
    constexpr void addAxis(std::size_t offset, const Axis& axis)
    {
        const unsigned porch = (axis.frontPorch - 1) | (axis.positiveSync ? 0x8000U : 0U);
        for (const unsigned field : {axis.active - 1, axis.blanking - 1, porch, axis.sync - 1}) {
            put(block_, offset, {low(field), low(field >> 8)});
            offset += 2;
        }
    }

    Block block_{};
    std::size_t end_ = 5;
};

/// The whole EDID.
template <typename... Blocks>
constexpr auto edidOf(const Blocks&... blocks)
{
    std::array<std::uint8_t, sizeof...(Blocks) * kBlockSize> edid{};
    std::size_t end = 0;
    for (const Block& block : {blocks...}) {
        for (const std::uint8_t byte : block) {
            edid[end++] = byte;
        }
    }
    return edid;
}

}  // namespace vek::monitor_edid

#endif
