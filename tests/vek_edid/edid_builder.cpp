#include "edid_builder.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

namespace edid_builder
{
namespace
{

constexpr std::size_t kBlockSize = 128;

std::uint8_t byte(unsigned value)
{
    return static_cast<std::uint8_t>(value & 0xFF);
}

Bytes lessOne16(unsigned value, bool topBit = false)
{
    return {byte(value - 1), byte((value - 1) >> 8 | (topBit ? 0x80U : 0U))};
}

Bytes joined(const std::vector<Bytes>& parts)
{
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

void mustFit(std::size_t size, std::size_t limit)
{
    if (size > limit) {
        throw std::length_error("the block is too small for its content");
    }
}

}  // namespace

Bytes operator+(const Bytes& left, const Bytes& right)
{
    return joined({left, right});
}

unsigned pick(std::mt19937& random, unsigned low, unsigned high)
{
    return std::uniform_int_distribution<unsigned>(low, high)(random);
}

Bytes detailed(const Detailed& t)
{
    return {byte(t.clock10Khz),
            byte(t.clock10Khz >> 8),
            byte(t.hActive),
            byte(t.hBlank),
            byte((t.hActive >> 8) << 4 | t.hBlank >> 8),
            byte(t.vActive),
            byte(t.vBlank),
            byte((t.vActive >> 8) << 4 | t.vBlank >> 8),
            byte(t.hFront),
            byte(t.hSync),
            byte((t.vFront & 15) << 4 | (t.vSync & 15)),
            byte((t.hFront >> 8) << 6 | (t.hSync >> 8) << 4 | (t.vFront >> 4) << 2 | t.vSync >> 4),
            byte(t.widthMm),
            byte(t.heightMm),
            byte((t.widthMm >> 8) << 4 | t.heightMm >> 8),
            byte(t.hBorder),
            byte(t.vBorder),
            byte(t.flags)};
}

Bytes descriptor(unsigned tag, const Bytes& data)
{
    constexpr std::size_t kSize = 18;
    Bytes result = Bytes{0, 0, 0, byte(tag)} + data;
    mustFit(result.size(), kSize);
    result.resize(kSize);
    return result;
}

Bytes text(unsigned tag, const std::string& content)
{
    constexpr std::size_t kLength = 13;
    std::string padded = content.size() < kLength ? content + '\n' : content;
    padded.resize(kLength, ' ');
    return descriptor(tag, Bytes{0} + Bytes(padded.begin(), padded.end()));
}

Bytes name()
{
    return text(0xFC, "TEST DISPLAY");
}

Bytes summed(Bytes block)
{
    block.pop_back();
    block.push_back(byte(0U - std::accumulate(block.begin(), block.end(), 0U)));
    return block;
}

Bytes base(const std::vector<Bytes>& descriptors, unsigned extensions,
           const std::vector<std::pair<std::size_t, unsigned>>& changes)
{
    Bytes block{0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x52, 0x74, 0x34, 0x12, 1,    2,
                3,    4,    12,   30,   1,    4,    0xA5, 60,   34,   120,  0x3A, 0xEE, 0x91, 0xA3,
                0x54, 0x4C, 0x99, 0x26, 0x0F, 0x50, 0x54, 0,    0,    0,    1,    1,    1,    1,
                1,    1,    1,    1,    1,    1,    1,    1,    1,    1,    1,    1};
    std::vector<Bytes> all = descriptors;
    while (all.size() < 4) {
        all.push_back(descriptor(0x10, {}));
    }
    block = block + joined(all) + Bytes{byte(extensions), 0};
    mustFit(block.size(), kBlockSize);
    for (const auto& [offset, value] : changes) {
        block.at(offset) = byte(value);
    }
    return summed(block);
}

Bytes cta(const std::vector<Bytes>& dataBlocks, const std::vector<Bytes>& timings, unsigned revision)
{
    const Bytes collection = joined(dataBlocks);
    Bytes block = Bytes{0x02, byte(revision), byte(static_cast<unsigned>(collection.size()) + 4), 0x70} + collection +
                  joined(timings);
    mustFit(block.size(), kBlockSize - 1);
    block.resize(kBlockSize);
    return summed(block);
}

Bytes dataBlock(unsigned tag, const Bytes& payload)
{
    mustFit(payload.size(), 31);
    return Bytes{byte(tag << 5 | static_cast<unsigned>(payload.size()))} + payload;
}

Bytes extended(unsigned tag, const Bytes& payload)
{
    return dataBlock(7, Bytes{byte(tag)} + payload);
}

Bytes withCta(const std::vector<Bytes>& dataBlocks, const std::vector<Bytes>& timings)
{
    return base({detailed(), name()}, 1) + cta(dataBlocks, timings);
}

Bytes displayId(const std::vector<Bytes>& dataBlocks, unsigned version)
{
    constexpr std::size_t kDataSize = 121;
    Bytes data = joined(dataBlocks);
    mustFit(data.size(), kDataSize);
    data.resize(kDataSize);
    const Bytes section = summed(Bytes{byte(version), kDataSize, 3, 0} + data + Bytes{0});
    return summed(Bytes{0x70} + section + Bytes{0});
}

Bytes displayIdBlock(unsigned tag, const Bytes& payload, unsigned flags)
{
    return Bytes{byte(tag), byte(flags), byte(static_cast<unsigned>(payload.size()))} + payload;
}

Bytes longTiming(const Long& t)
{
    return Bytes{byte(t.clock - 1), byte((t.clock - 1) >> 8), byte((t.clock - 1) >> 16), byte(t.options)} +
           lessOne16(t.hActive) + lessOne16(t.hBlank) + lessOne16(t.hFront, t.hPositive) + lessOne16(t.hSync) +
           lessOne16(t.vActive) + lessOne16(t.vBlank) + lessOne16(t.vFront, t.vPositive) + lessOne16(t.vSync);
}

Bytes fullSample()
{
    const Bytes limits = descriptor(0xFD, {0x0A, 48, 75, 30, 90, 17, 4, 0x11, 0x5A, 0xF0, 0xF8, 0x38, 0xF0, 60});
    const Bytes hdmi = {0x03, 0x0C, 0x00, 0x10, 0x00, 0xB8, 60,   0xEF, 3,    5,    7,    9,   0xC8,
                        0x87, 1,    2,    3,    4,    0x00, 0x41, 0x00, 0x03, 0x06, 0x18, 0x10};
    const Bytes forum = {0xD8, 0x5D, 0xC4, 1, 120, 0xFF, 0x6F, 0xFF, 0xB0, 0x78, 0xFF, 0x67, 0x10};
    Long longer;
    longer.clock = 148500;
    const Bytes first =
        cta({dataBlock(2, {0x90, 4, 5, 20, 31, 63, 97, 120, 199, 219}),
             dataBlock(1, {0x09, 0x07, 0x07, 0x15, 0x07, 0x50, 0x7F, 0x07, 0x2B}), dataBlock(4, {0xFF, 0xFF, 0x0F}),
             dataBlock(3, hdmi), dataBlock(3, forum), extended(0, {0x4A}), extended(5, {0xFF, 0xF0}),
             extended(6, {15, 1, 96, 96, 32}), extended(14, {96, 97}), extended(15, {0x0F})},
            {});
    const Bytes second =
        cta({extended(7, {3, 1, 0, 2, 2, 2, 0}), extended(8, {16, 1, 0x10, 1, 0x20, 2}), extended(13, {1, 129, 145}),
             extended(19, {0xE3, 15, 1, 0, 40, 50, 30, 0, 1, 2}), extended(20, {0x61, 1, 0x10, 0x20, 0x30, 0x22, 2}),
             extended(32, {0, 1, 2, 0x21, 3, 0x0C, 0, 9, 4}), extended(34, Bytes{0} + longTiming(longer)),
             extended(35, {0, 1, 2, 0x52}), extended(42, {0, 2, 0x7F, 7, 0x37, 4, 59}),
             extended(1, {0x46, 0xD0, 0x00, 1}), extended(17, {0x46, 0xD0, 0x00, 1}), dataBlock(5, {0x40, 1, 2})});
    const Bytes third = displayId(
        {displayIdBlock(0x22, longTiming(longer)), displayIdBlock(0x23, {1, 2}), displayIdBlock(0x28, Bytes(22, 1)),
         displayIdBlock(0x24, {2, 0x7F, 7, 0x37, 4, 59}), displayIdBlock(0x81, dataBlock(2, {16, 5}))},
        0x20);
    return base({detailed(), limits, name(), descriptor(0xF8, {0, 1, 0x7F, 0x1C, 0x21, 0x57, 0x28, 0x7F})}, 3,
                {{35, 0xFF}, {36, 0xFF}, {37, 0x80}, {38, 0x81}, {39, 0x80}, {40, 0x45}, {41, 0x0A}}) +
           first + second + third;
}

}  // namespace edid_builder
