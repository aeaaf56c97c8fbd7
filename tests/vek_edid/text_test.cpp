// The text itself: its layout, what other programs do not decode, and each error and oddity.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "edid_builder.h"
#include "printed.h"

namespace
{

using edid_builder::base;
using edid_builder::Bytes;
using edid_builder::dataBlock;
using edid_builder::descriptor;
using edid_builder::detailed;
using edid_builder::extended;
using edid_builder::name;
using edid_builder::withCta;
using edid_builder::operator+;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kNoFindings = "Errors and oddities: none\n";

TEST(Text, OfABaseBlock)
{
    EXPECT_EQ(
        printed(base({detailed(), name()}, 0, {{35, 0x20}, {38, 0xD1}, {39, 0xC0}})),
        R"(EDID: 128 bytes
Block 0, Base EDID:
  Header: valid
  EDID version: 1.4
  Vendor and product identification:
    Manufacturer: TST
    Product code: 4660 (0x1234)
    Serial number: 67305985
    Week of manufacture: 12
    Year of manufacture: 2020
  Basic display parameters and features:
    Video input: digital
    Bits per primary color channel: 8
    Interface: DisplayPort
    Image size: 60 cm x 34 cm
    Gamma: 2.20
    DPMS: active off
    Color encodings: RGB 4:4:4, YCbCr 4:4:4, YCbCr 4:2:2
    First detailed timing: preferred, with native pixel format and refresh rate
  Color characteristics:
    Red: 0.6396, 0.3301
    Green: 0.2998, 0.5996
    Blue: 0.1504, 0.0596
    White: 0.3125, 0.3291
  Established timings I and II:
    DMT 0x04: 640x480  59.940 Hz  4:3  31.469 kHz  25.175 MHz
  Standard timings:
    DMT 0x52: 1920x1080  60.000 Hz  16:9  67.500 kHz  148.500 MHz
  Descriptors:
    DTD 1: 1920x1080  60.000 Hz  16:9  67.500 kHz  148.500 MHz
      Horizontal: active 1920, front porch 88, sync 44, back porch 148, border 0, total 2200, positive sync
      Vertical: active 1080, front porch 4, sync 5, back porch 36, border 0, total 1125, positive sync
      Image size: 600 mm x 340 mm
      Sync: digital separate
    Display Product Name: 'TEST DISPLAY'
    Dummy descriptor
    Dummy descriptor
  Extension blocks: 0
  Checksum: )" +
            [] {
                const Bytes edid = base({detailed(), name()}, 0, {{35, 0x20}, {38, 0xD1}, {39, 0xC0}});
                char checksum[8];
                std::snprintf(checksum, sizeof checksum, "0x%02x", static_cast<unsigned>(edid.back()));
                return std::string(checksum);
            }() +
            " (valid)\n" + kNoFindings);
}

TEST(Text, LeavesExtensionsOutWhenAsked)
{
    const std::string text = printed(withCta({dataBlock(2, {16})}), false);
    EXPECT_THAT(text, HasSubstr("Block 0, Base EDID:"));
    EXPECT_THAT(text, Not(HasSubstr("Block 1")));
    EXPECT_THAT(text, EndsWith(kNoFindings));
}

TEST(Text, OfAFullSampleHasNothingToFindFault)
{
    EXPECT_THAT(printed(edid_builder::fullSample()), EndsWith(kNoFindings));
}

TEST(Text, EscapesUnprintableCharacters)
{
    const Bytes odd = descriptor(0xFC, {0, 'A', 0x1B, '[', 'm', 0x00, 0xE9, 0x7F, '\n', ' ', ' ', ' ', ' ', ' '});
    EXPECT_THAT(printed(base({detailed(), odd})), HasSubstr("Display Product Name: 'A\\x1b[m\\x00\\xe9\\x7f'\n"));
}

TEST(Text, OfHdmiLatencies)
{
    // HDMI 1.4b, 8.3.2: half the milliseconds, plus 1.
    const Bytes hdmi{0x03, 0x0C, 0x00, 0x10, 0x00, 0x00, 60, 0xC0, 0x20, 1, 0, 251};
    const std::string text = printed(withCta({dataBlock(3, hdmi)}));
    EXPECT_THAT(text, HasSubstr("    Video latency: 62 ms\n"));
    EXPECT_THAT(text, HasSubstr("    Audio latency: 0 ms\n"));
    EXPECT_THAT(text, HasSubstr("    Interlaced video latency: not known\n"));
    EXPECT_THAT(text, HasSubstr("    Interlaced audio latency: 500 ms\n"));
    const Bytes none{0x03, 0x0C, 0x00, 0x10, 0x00, 0x00, 60, 0x80, 255, 252};
    EXPECT_THAT(printed(withCta({dataBlock(3, none)})), HasSubstr("    Video latency: not supported\n"));
    EXPECT_THAT(printed(withCta({dataBlock(3, none)})), HasSubstr("Audio latency: value 252 is reserved\n"));
}

TEST(Text, OfHdmi3dFormats)
{
    const Bytes hdmi{0x03, 0x0C, 0x00, 0x10, 0x00, 0x00, 60,   0x2F, 0xD8,
                     0x26, 1,    0x01, 0x41, 0x00, 0x02, 0x06, 0x18, 0x10};
    const std::string text = printed(withCta({dataBlock(3, hdmi)}));
    EXPECT_THAT(text, HasSubstr("    Content type: graphics\n    Content type: photo\n    Content type: cinema\n"
                                "    Content type: game\n    3D: mandatory formats\n"
                                "    Base block image size: right, in units of 5 centimeters\n"
                                "    HDMI VIC 1: 3840x2160  30.000 Hz  16:9  67.500 kHz  297.000 MHz\n"
                                "    3D structure: frame packing\n    3D structure: top-and-bottom\n"
                                "    3D structure: side-by-side (half)\n"
                                "    3D structures hold for video descriptor 2\n"
                                "    3D of video descriptor 1: top-and-bottom\n"
                                "    3D of video descriptor 2: side-by-side (half)\n"));
}

TEST(Text, OfHdmiForumCapabilities)
{
    const Bytes forum{0xD8, 0x5D, 0xC4, 1, 120, 0xFF, 0x6F, 0xFF, 0xB0, 0x78, 0xFF, 0x67, 0x10};
    const std::string text = printed(withCta({dataBlock(3, forum)}));
    for (const char* fact :
         {"Maximum TMDS character rate: 600 MHz",
          "SCDC present",
          "SCDC read requests",
          "Cable status",
          "Scrambling at or below 340 Mcsc",
          "UHD VIC",
          "ALLM: auto low-latency mode",
          "FVA: fast vactive",
          "VRR: negative Mvrr values",
          "VRR: cinema rates",
          "VRR: M delta",
          "QMS: quick media switching",
          "VRR minimum: 48 Hz",
          "VRR maximum: 632 Hz",
          "DSC: VESA DSC 1.2a",
          "DSC: native YCbCr 4:2:0",
          "DSC: every 1/16 bit per pixel",
          "DSC slices: 16, up to 400 MHz each",
          "DSC chunk bytes in a line: 17408",
          "DSC fixed rate link: 3 and 6 Gbps per lane on 3 lanes, 6, 8, 10 and 12 Gbps on 4 lanes"}) {
        EXPECT_THAT(text, HasSubstr("    " + std::string(fact) + '\n'));
    }
}

TEST(Text, OfVendorsNamedAndDumped)
{
    const std::string text = printed(withCta({extended(1, {0x46, 0xD0, 0x00, 1, 2}), extended(1, {0x8B, 0x84, 0x90, 3}),
                                              dataBlock(3, {0x11, 0x22, 0x33, 0xAA, 0xBB})}));
    EXPECT_THAT(text, HasSubstr("  Vendor-Specific Video Data Block (Dolby Vision), OUI 00-D0-46:\n    01 02\n"
                                "  Vendor-Specific Video Data Block (HDR10+), OUI 90-84-8B:\n    03\n"
                                "  Vendor-Specific Data Block (unknown vendor), OUI 33-22-11:\n    aa bb\n"));
}

TEST(Text, OfRoomAndSpeakers)
{
    const std::string text = printed(withCta(
        {extended(19, {0xE3, 15, 1, 0, 40, 50, 30, 0, 1, 2}), extended(20, {0x61, 1, 0x10, 0x20, 0x30, 0x02, 2})}));
    EXPECT_THAT(text, HasSubstr("    Speakers: 4\n    Speaker locations are given\n    FL/FR: front left and right\n"));
    EXPECT_THAT(text, HasSubstr("    Room: x 40 dm, y 50 dm, z 30 dm\n    Display: x 0x00, y 0x01, z 0x02\n"));
    EXPECT_THAT(text, HasSubstr("    Channel 1: speaker id 0x01, active, x 0x10, y 0x20, z 0x30\n"
                                "    Channel 2: speaker id 0x02, inactive\n"));
}

TEST(Text, OfInfoFramesAndDynamicMetadata)
{
    const std::string text = printed(withCta(
        {extended(32, {0x20, 1, 0x55, 2, 0x21, 3, 0x0C, 0, 9, 7}), extended(7, {4, 4, 0, 0x11, 0x22, 2, 1, 0})}));
    EXPECT_THAT(text, HasSubstr("    Additional vendor-specific InfoFrames at a time: 1\n"
                                "    InfoFrame type 0x02: auxiliary video information (AVI)\n"
                                "    InfoFrame type 0x01: vendor-specific, OUI 00-0C-03\n"
                                "    InfoFrame type 0x07: dynamic range and mastering\n"));
    EXPECT_THAT(text, HasSubstr("    HDR dynamic metadata type 0x0004:\n      11 22\n"
                                "    HDR dynamic metadata type 0x0001:\n"));
}

TEST(Text, OfOtherExtensionsNamedAndDumped)
{
    struct Case {
        std::uint8_t tag;
        const char* name;
    };
    for (const Case& example : {Case{0x10, "Video Timing Block Extension"}, Case{0x40, "Display Information Extension"},
                                Case{0x50, "Localized String Extension"}, Case{0xF0, "Block Map Extension Block"},
                                Case{0xFF, "Manufacturer-Specific Extension Block"}, Case{0x77, "Unknown Extension"}}) {
        Bytes block(128, 0);
        block[0] = example.tag;
        block[1] = 0x02;
        const std::string text = printed(base({detailed(), name()}, 1) + edid_builder::summed(block));
        EXPECT_THAT(text, HasSubstr(std::string("Block 1, ") + example.name));
        EXPECT_THAT(text, HasSubstr("02 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"));
        EXPECT_EQ(text.find("Entry 1: tag 0x02, CTA-861 Extension Block") != std::string::npos, example.tag == 0xF0);
    }
}

/// An EDID and what must be said against it.
struct Flawed {
    const char* finding;
    Bytes edid;
};

Bytes flawedBase(const std::vector<std::pair<std::size_t, unsigned>>& changes)
{
    return base({detailed(), name()}, 0, changes);
}

Bytes flawedTiming(void (*change)(edid_builder::Detailed& timing))
{
    edid_builder::Detailed timing;
    change(timing);
    return base({detailed(timing), name()});
}

void expectFindings(const std::vector<Flawed>& all)
{
    for (const Flawed& flawed : all) {
        const std::string text = printed(flawed.edid);
        const std::size_t findings = text.find("Errors and oddities:\n");
        ASSERT_NE(findings, std::string::npos) << flawed.finding;
        EXPECT_THAT(text.substr(findings), HasSubstr(flawed.finding));
    }
}

TEST(Findings, OfTheBaseBlock)
{
    Bytes wrongSum = flawedBase({});
    wrongSum[127] ^= 1;
    expectFindings({
        {"Block 0: the header is not 00 ff ff ff ff ff ff 00", flawedBase({{1, 0xFE}})},
        {"Block 0: the checksum is 0x", wrongSum},
        {"Block 0: EDID version 2.0 is not known", flawedBase({{18, 2}, {19, 0}})},
        {"Block 0: manufacturer id 0x0000 is not three letters", flawedBase({{8, 0}, {9, 0}})},
        {"Block 0: week of manufacture 60 does not exist", flawedBase({{16, 60}})},
        {"Block 0: a model year needs EDID 1.4", flawedBase({{16, 0xFF}, {19, 3}})},
        {"Block 0: reserved value in the video input definition", flawedBase({{20, 0xF0}})},
        {"Block 0: reserved bits of the video input definition are set", flawedBase({{20, 0xA5}, {19, 3}})},
        {"Block 0: EDID 1.3 requires the preferred timing bit", flawedBase({{19, 3}, {24, 0x38}})},
        {"Block 0: an aspect ratio in place of the image size needs EDID 1.4", flawedBase({{19, 3}, {22, 0}})},
        {"Block 0: standard timing 00 c0 is reserved", flawedBase({{38, 0}, {39, 0xC0}})},
        {"Block 0: the first descriptor is not a detailed timing", base({name(), detailed()})},
        {"Block 0: no Display Product Name", base({detailed()})},
        {"Block 0: more than one Display Product Name", base({detailed(), name(), name()})},
        {"Block 0: 1 of 2 declared blocks are missing", base({detailed(), name()}, 1)},
        {"Block 0: 128 bytes follow the declared blocks", flawedBase({}) + Bytes(128, 0)},
        {"Block 0: there are no bytes", {}},
    });
}

TEST(Findings, OfDetailedTimings)
{
    expectFindings({
        {"detailed timing 1 is impossible: no picture", flawedTiming([](auto& timing) { timing.hActive = 0; })},
        {"detailed timing 1 is impossible: no picture", flawedTiming([](auto& timing) { timing.vActive = 0; })},
        {"detailed timing 1 is impossible: no sync pulse", flawedTiming([](auto& timing) { timing.vSync = 0; })},
        {"detailed timing 1 is impossible: blanking too short for front porch, sync and border",
         flawedTiming([](auto& timing) { timing.hBlank = 100; })},
        {"detailed timing 1 is impossible: blanking too short for front porch, sync and border",
         flawedTiming([](auto& timing) { timing.vBorder = 40; })},
    });
}

TEST(Findings, OfDisplayDescriptors)
{
    const auto with = [](const Bytes& bytes) { return base({detailed(), name(), bytes}); };
    const auto limits = [&with](const Bytes& bytes) { return with(descriptor(0xFD, bytes)); };
    Bytes reservedByte = edid_builder::text(0xFE, "A");
    reservedByte[2] = 1;
    expectFindings({
        {"display descriptor tag 0x55 is reserved", with(descriptor(0x55, {}))},
        {"display descriptor: byte 2 is not 0", with(reservedByte)},
        {"Alphanumeric Data String: the text is empty", with(edid_builder::text(0xFE, ""))},
        {"Alphanumeric Data String: bytes other than blanks follow the text",
         with(descriptor(0xFE, {0, 'A', '\n', 'B', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '}))},
        {"Display Range Limits: Vertical rate 75-48 Hz is no range", limits({0, 75, 48, 30, 90, 17, 1})},
        {"Display Range Limits: Horizontal rate 90-30 kHz is no range", limits({0, 48, 75, 90, 30, 17, 1})},
        {"Display Range Limits: reserved bits of the rate offsets are set", limits({0x10, 48, 75, 30, 90, 17, 1})},
        {"Display Range Limits: timing support 0x07 is reserved", limits({0, 48, 75, 30, 90, 17, 7})},
        {"Display Range Limits: no preferred refresh rate with CVT support",
         limits({0, 48, 75, 30, 90, 17, 4, 0x11, 0, 0, 0x80, 0x08, 0, 0})},
        {"Display Range Limits: reserved bits of the CVT support are set",
         limits({0, 48, 75, 30, 90, 17, 4, 0x11, 0, 0, 0x81, 0x08, 0, 60})},
        {"Dummy descriptor: its bytes are not 0", with(descriptor(0x10, {0, 1}))},
    });
}

TEST(Findings, OfCtaBlocks)
{
    Bytes overrun = withCta({dataBlock(2, {16, 4})});
    overrun[128 + 4] = 0x5F;
    Bytes badOffset = withCta({});
    badOffset[128 + 2] = 2;
    Bytes revision = withCta({});
    revision[128 + 1] = 9;
    expectFindings({
        {"Block 1: a data block with tag 2 reaches past the end of the data blocks", overrun},
        {"Block 1: detailed timings cannot start at byte 2", badOffset},
        {"Block 1: CTA-861 revision 9 is not known", revision},
        {"Block 1: CTA-861 revision 1 has no data blocks",
         base({detailed(), name()}, 1) + edid_builder::cta({dataBlock(2, {16})}, {}, 1)},
        {"Block 1: bytes after the last detailed timing are not 0", withCta({}, {detailed(), {0, 0, 1}})},
        {"Block 1: VIC 220 is reserved", withCta({dataBlock(2, {220})})},
        {"Block 1: VIC 128 is reserved", withCta({dataBlock(2, {128})})},
        {"Block 1: a data block has the reserved tag 0", withCta({dataBlock(0, {1})})},
        {"Block 1: a data block lacks its extended tag", withCta({dataBlock(7, {})})},
        {"Block 1: extended tag 0x63 is reserved", withCta({extended(99, {1})})},
        {"Audio Data Block: its length is no multiple of 3", withCta({dataBlock(1, {9, 7})})},
        {"audio format 0 is reserved", withCta({dataBlock(1, {0, 7, 7})})},
        {"audio extension format 0x1f is reserved", withCta({dataBlock(1, {0x78, 7, 0xF8})})},
        {"Speaker Allocation Data Block: its length is not 3", withCta({dataBlock(4, {1})})},
        {"reserved bits of a speaker allocation are set", withCta({dataBlock(4, {1, 0, 0x80})})},
        {"Vendor-Specific Data Block: no OUI", withCta({dataBlock(3, {1, 2})})},
        {"HDMI block: no source physical address", withCta({dataBlock(3, {3, 12, 0, 1})})},
        {"HDMI block: its latencies reach past its end", withCta({dataBlock(3, {3, 12, 0, 16, 0, 0, 0, 0xC0, 1})})},
        {"HDMI block: its video formats reach past its end",
         withCta({dataBlock(3, {3, 12, 0, 16, 0, 0, 0, 0x20, 0, 0xE0, 1})})},
        {"HDMI VIC 9 is reserved", withCta({dataBlock(3, {3, 12, 0, 16, 0, 0, 0, 0x20, 0, 0x20, 9})})},
        {"HDMI Forum capabilities are cut short", withCta({dataBlock(3, {0xD8, 0x5D, 0xC4, 1})})},
        {"Colorimetry Data Block: reserved bits MD0 to MD3 are set", withCta({extended(5, {0, 1})})},
        {"Colorimetry Data Block: shorter than 2 bytes", withCta({extended(5, {1})})},
        {"HDR Static Metadata Data Block: reserved bits are set", withCta({extended(6, {0x10, 1})})},
        {"HDR Dynamic Metadata Data Block: wrong length", withCta({extended(7, {9, 1, 0})})},
        {"YCbCr 4:2:0 Capability Map Data Block: there is no video descriptor 3",
         withCta({dataBlock(2, {16, 4}), extended(15, {4})})},
        {"DisplayID Type VII Video Timing Data Block: wrong length", withCta({extended(34, {1, 2})})},
        {"DisplayID Type X Video Timing Data Block: wrong length", withCta({extended(42, {0, 2})})},
        {"Speaker Location Data Block: its coordinates are cut short", withCta({extended(20, {0x60, 1})})},
        {"InfoFrame Data Block: its last descriptor is cut short", withCta({extended(32, {0, 0, 1})})},
    });
}

TEST(Findings, OfDisplayIdBlocks)
{
    const auto with = [](const std::vector<Bytes>& blocks) {
        return base({detailed(), name()}, 1) + edid_builder::displayId(blocks, 0x20);
    };
    Bytes wrongSum = with({});
    wrongSum[128 + 126] ^= 1;
    Bytes longSection = with({});
    longSection[128 + 2] = 200;
    Bytes longBlock = with({});
    longBlock[128 + 5] = 0x26;
    longBlock[128 + 7] = 200;
    edid_builder::Long impossible;
    impossible.hBlank = 50;
    expectFindings({
        {"Block 1: DisplayID: the section's checksum is wrong", wrongSum},
        {"Block 1: DisplayID: the section reaches past the end of the block", longSection},
        {"Block 1: DisplayID data block 0x26 reaches past the end of the section", longBlock},
        {"Block 1: DisplayID data block tag 0x60 is not known", with({edid_builder::displayIdBlock(0x60, {1})})},
        {"DisplayID Tiled Display Topology Data Block: shorter than 22 bytes",
         with({edid_builder::displayIdBlock(0x28, {1})})},
        {"DisplayID: a timing is cut short", with({edid_builder::displayIdBlock(0x22, {1})})},
        {"Timing 1 is impossible: blanking too short for front porch, sync and border",
         with({edid_builder::displayIdBlock(0x22, edid_builder::longTiming(impossible))})},
        {"DMT 0xff is not assigned", with({edid_builder::displayIdBlock(0x23, {0xFF})})},
    });
}

}  // namespace
