/**
 * @file edid_builder.h
 * Builds EDIDs byte by byte for tests: base block, CTA-861 and DisplayID extensions, descriptors and data blocks.
 */
#ifndef EDID_BUILDER_H
#define EDID_BUILDER_H

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace edid_builder
{

using Bytes = std::vector<std::uint8_t>;

/** Joins byte strings. */
Bytes operator+(const Bytes& left, const Bytes& right);

/** A number from a range, both ends included. */
unsigned pick(std::mt19937& random, unsigned low, unsigned high);

/** What a detailed timing descriptor of E-EDID holds; the blanking includes porches, sync and both borders. */
struct Detailed {
    unsigned clock10Khz = 14850;
    unsigned hActive = 1920, hBlank = 280, hFront = 88, hSync = 44;
    unsigned vActive = 1080, vBlank = 45, vFront = 4, vSync = 5;
    unsigned widthMm = 600, heightMm = 340;
    unsigned hBorder = 0, vBorder = 0;
    unsigned flags = 0x1E;
};
Bytes detailed(const Detailed& timing = {});

/** A display descriptor. @param data what follows the tag, at most 14 bytes, filled with zeros */
Bytes descriptor(unsigned tag, const Bytes& data);

/** A display descriptor of text, ended by a line feed and blanks when it is shorter than 13 characters. */
Bytes text(unsigned tag, const std::string& content);

/** The product name that most EDIDs here carry. */
Bytes name();

/** Sets the last byte of a block so that the block sums up to 0. */
Bytes summed(Bytes block);

/** A base block of EDID 1.4 of a digital display. Missing descriptors are dummies. @param changes offset and value */
Bytes base(const std::vector<Bytes>& descriptors, unsigned extensions = 0,
           const std::vector<std::pair<std::size_t, unsigned>>& changes = {});

/** A CTA-861 extension. Cuts nothing: it must fit. */
Bytes cta(const std::vector<Bytes>& dataBlocks, const std::vector<Bytes>& timings = {}, unsigned revision = 3);

/** A CTA-861 data block. */
Bytes dataBlock(unsigned tag, const Bytes& payload);

/** A CTA-861 data block with an extended tag. */
Bytes extended(unsigned tag, const Bytes& payload);

/** A base block and one CTA-861 extension of the given data blocks. */
Bytes withCta(const std::vector<Bytes>& dataBlocks, const std::vector<Bytes>& timings = {});

/** A DisplayID extension block of data blocks. @param version 0x13 or 0x20, for example */
Bytes displayId(const std::vector<Bytes>& dataBlocks, unsigned version);

/** A DisplayID data block. */
Bytes displayIdBlock(unsigned tag, const Bytes& payload, unsigned flags = 0);

/** A 20-byte detailed timing of DisplayID. @param clock in its unit */
struct Long {
    unsigned clock = 14850;
    unsigned options = 0x84;
    unsigned hActive = 1920, hBlank = 280, hFront = 88, hSync = 44;
    unsigned vActive = 1080, vBlank = 45, vFront = 4, vSync = 5;
    bool hPositive = true, vPositive = false;
};
Bytes longTiming(const Long& timing = {});

/** An EDID of base block, two CTA-861 extensions and a DisplayID extension with every kind of content. */
Bytes fullSample();

}  // namespace edid_builder

#endif
