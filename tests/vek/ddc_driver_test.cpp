#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "api/connection.h"
#include "captured_output.h"
#include "drivers/ddc_edid.h"
#include "drivers/hdmi_phy.h"
#include "drivers/output_routing.h"
#include "fake_i2c_bus.h"
#include "vek.h"

// The functions under test are linked in with a path of this test's own.
constinit const vek::AccessPath* vek::openPath = nullptr;

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;

using Edid = std::vector<std::uint8_t>;

constexpr std::size_t kExtensionCount = 126;

void seal(std::span<std::uint8_t> block)
{
    block.back() = 0;
    block.back() = static_cast<std::uint8_t>(-std::accumulate(block.begin(), block.end(), 0));
}

/** An EDID of valid blocks; the extensions are numbered in their second byte. The base block has no timing. */
Edid edidWith(std::size_t extensions, std::size_t declared)
{
    constexpr std::array<std::uint8_t, 20> kStart{0x00, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x00, 0x52, 0xc1,
                                                  0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x20, 0x01, 0x03};
    Edid edid((1 + extensions) * vek::kEdidBlockSize);
    std::copy(kStart.begin(), kStart.end(), edid.begin());
    edid[kExtensionCount] = static_cast<std::uint8_t>(declared);
    for (std::size_t number = 0; number <= extensions; ++number) {
        const auto block = std::span(edid).subspan(number * vek::kEdidBlockSize, vek::kEdidBlockSize);
        if (number > 0) {
            block[0] = 0xff;
            block[1] = static_cast<std::uint8_t>(number);
        }
        seal(block);
    }
    return edid;
}

/** Puts 1920x1080 at 60 Hz into the first descriptor. */
Edid withTiming(Edid edid)
{
    constexpr std::array<std::uint8_t, 18> kTiming{0x02, 0x3a, 0x80, 0x18, 0x71, 0x38, 0x2d, 0x40, 0x58,
                                                   0x2c, 0x45, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x1e};
    std::copy(kTiming.begin(), kTiming.end(), edid.begin() + 54);
    seal(std::span(edid).first(vek::kEdidBlockSize));
    return edid;
}

/** What readEdid() makes of a display. */
struct Fetched {
    explicit Fetched(vek::I2cBus& bus) : result(vek::readEdid(bus, buffer, length)) {}

    Edid bytes() const { return {buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(length)}; }

    vek::EdidBuffer buffer{};
    std::size_t length = 0;
    int result;
};

TEST(DdcDriver, ReadsABaseBlockWithoutTheSegmentPointer)
{
    FakeDisplay display(edidWith(0, 0));
    display.hasSegmentPointer = false;
    const Fetched fetched(display);
    EXPECT_EQ(fetched.result, VEK_OK);
    EXPECT_EQ(fetched.bytes(), edidWith(0, 0));
    EXPECT_EQ(display.transactions, 1);
}

TEST(DdcDriver, ReadsTwoBlocksWithoutTheSegmentPointer)
{
    FakeDisplay display(edidWith(1, 1));
    display.hasSegmentPointer = false;
    const Fetched fetched(display);
    EXPECT_EQ(fetched.result, VEK_OK);
    EXPECT_EQ(fetched.bytes(), edidWith(1, 1));
    EXPECT_EQ(display.transactions, 2);
}

TEST(DdcDriver, SetsTheSegmentPointerForEachLaterBlock)
{
    FakeDisplay display(edidWith(4, 4));
    const Fetched fetched(display);
    EXPECT_EQ(fetched.result, VEK_OK);
    EXPECT_EQ(fetched.bytes(), edidWith(4, 4));
    EXPECT_EQ(display.transactions, 5);
    EXPECT_THAT(display.segments, ElementsAre(1, 1, 2));
}

TEST(DdcDriver, ReadsUpTo255Extensions)
{
    FakeDisplay display(edidWith(255, 255));
    const Fetched fetched(display);
    EXPECT_EQ(fetched.result, VEK_OK);
    EXPECT_EQ(fetched.bytes(), edidWith(255, 255));
    EXPECT_EQ(display.transactions, 256);
    EXPECT_EQ(display.segments.size(), 254U);
    EXPECT_EQ(display.segments.back(), 127);
}

TEST(DdcDriver, BelievesTheFirstExtensionAboutTheirNumber)
{
    Edid edid = edidWith(3, 1);
    const auto first = std::span(edid).subspan(vek::kEdidBlockSize, vek::kEdidBlockSize);
    // CTA-861, revision 3, with an HDMI Forum EDID Extension Override Data Block: 3 extensions.
    constexpr std::array<std::uint8_t, 7> kOverride{0x02, 0x03, 0x07, 0x00, 0xe2, 0x78, 0x03};
    std::copy(kOverride.begin(), kOverride.end(), first.begin());
    seal(first);
    FakeDisplay display(edid);
    const Fetched fetched(display);
    EXPECT_EQ(fetched.result, VEK_OK);
    EXPECT_EQ(fetched.bytes(), edid);
}

TEST(DdcDriver, ReadsOneBlockOfWhatIsNoEdid)
{
    for (const std::uint8_t filler : std::initializer_list<std::uint8_t>{0x00, 0xff}) {
        FakeDisplay display(Edid(512, filler));
        const Fetched fetched(display);
        EXPECT_EQ(fetched.result, VEK_OK);
        EXPECT_EQ(fetched.bytes(), Edid(128, filler));
    }
}

TEST(DdcDriver, FailsWithoutADisplay)
{
    FakeDisplay nothing({});
    EXPECT_EQ(Fetched(nothing).result, VEK_NO_RESPONSE);
}

TEST(DdcDriver, FailsWhenALaterBlockCannotBeReached)
{
    FakeDisplay display(edidWith(3, 3));
    display.hasSegmentPointer = false;
    const Fetched fetched(display);
    EXPECT_EQ(fetched.result, VEK_NO_RESPONSE);
    EXPECT_EQ(fetched.length, 0U);
}

TEST(DdcDriver, FailsWhereverTheBusFails)
{
    // S a0 00 S a1 and 128 reads.
    for (const std::size_t step : {0U, 1U, 2U, 3U, 4U, 5U, 132U}) {
        FakeI2cBus bus;
        bus.hangsAt = step;
        EXPECT_EQ(Fetched(bus).result, VEK_TIMED_OUT) << step;
        EXPECT_EQ(bus.steps.back(), "P");
    }
    FakeI2cBus refusing;
    refusing.refusedData = 0;
    EXPECT_EQ(Fetched(refusing).result, VEK_NO_ACK_DATA);
}

/** The exported functions on a path to a display of the test's own. */
class DisplayOnPath : public testing::Test
{
protected:
    ~DisplayOnPath() override { vek::openPath = nullptr; }

    void attach(Edid edid)
    {
        display_ = FakeDisplay(std::move(edid));
        vek::openPath = &path_;
    }

    void openWithoutBuses()
    {
        path_.ddc = {};
        path_.i2c = {};
        path_.hdmiPhys = {};
        vek::openPath = &path_;
    }

private:
    /** Registers of a PHY that never locks. */
    class DeadPhy final : public vek::AddressSpace
    {
    public:
        vek::ReadResult read(std::uint64_t /*address*/, unsigned /*width*/) override { return {VEK_OK, 0}; }
        int write(std::uint64_t /*address*/, unsigned /*width*/, std::uint64_t /*value*/) override { return VEK_OK; }
    };

    /** A register region in which everything reads as the routing of HDMI-0 to display controller 0. */
    class RoutedRegisters final : public vek::AddressSpace
    {
    public:
        vek::ReadResult read(std::uint64_t /*address*/, unsigned /*width*/) override
        {
            return {VEK_OK, vek::output_routing::with(0, vek::DisplayOutput::kHdmi0, 0)};
        }
        int write(std::uint64_t /*address*/, unsigned /*width*/, std::uint64_t /*value*/) override { return VEK_OK; }
    };

    static constexpr vek::DisplayUnits kOneOutput{
        .controllers = 1, .hdmiOutputs = 1, .dpOutputs = 0, .vgaDdc = vek::kNoDdc, .dvoDdc = vek::kNoDdc};

    FakeDisplay display_{{}};
    DeadPhy phy_;
    RoutedRegisters registers_;
    vek::AccessPath path_{.mode = VEK_ACCESS_DRIVER,
                          .card = 0,
                          .deviceId = VEK_DEVICE_QZ201,
                          .registers = &registers_,
                          .videoMemory = nullptr,
                          .kernelMemory = nullptr,
                          .amba = nullptr,
                          .crtc = nullptr,
                          .pciConfiguration = nullptr,
                          .registerRegion = &registers_,
                          .i2c = {},
                          .ddc = {&display_},
                          .hdmiPhys = {&phy_},
                          .displays = kOneOutput};
};

/** Reads channel 0. @return the validity flag, or the negative result. */
int validityOfChannel0()
{
    int length = 0;
    uint8_t* data = nullptr;
    int valid = -1;
    const int result = vekDDCRead(0, &length, &data, &valid);
    return result < 0 ? result : valid;
}

TEST_F(DisplayOnPath, IsValidWithHeaderAndChecksums)
{
    attach(edidWith(3, 3));
    EXPECT_EQ(validityOfChannel0(), 1);
}

TEST_F(DisplayOnPath, IsInvalidWithAWrongChecksumInAnyBlock)
{
    for (const std::size_t block : {0U, 1U, 2U, 3U}) {
        Edid edid = edidWith(3, 3);
        ++edid[block * vek::kEdidBlockSize + 100];
        attach(edid);
        EXPECT_EQ(validityOfChannel0(), 0) << block;
        int length = 0;
        uint8_t* data = nullptr;
        int valid = 1;
        ASSERT_EQ(vekDDCRead(0, &length, &data, &valid), VEK_OK);
        EXPECT_EQ(Edid(data, data + length), edid) << block;
    }
}

TEST_F(DisplayOnPath, IsInvalidWithAWrongHeader)
{
    Edid edid = edidWith(0, 0);
    edid[7] = 1;
    seal(edid);
    attach(edid);
    EXPECT_EQ(validityOfChannel0(), 0);
}

TEST_F(DisplayOnPath, IsPrintedThoughItIsDamaged)
{
    Edid edid = edidWith(0, 0);
    ++edid[100];
    attach(edid);
    CapturedOutput output;
    EXPECT_EQ(vekHdmiEDIDRead(0), VEK_BAD_DATA);
    EXPECT_THAT(output.take(), HasSubstr("Manufacturer: TVA"));
}

TEST_F(DisplayOnPath, HasNoModeWhenItIsDamagedOrLacksOne)
{
    Edid damaged = withTiming(edidWith(0, 0));
    ++damaged[100];
    for (const Edid& edid : {edidWith(0, 0), damaged}) {
        attach(edid);
        VekDisplayMode mode{};
        mode.clock = 7;
        EXPECT_EQ(vekHdmiModeRead(0, &mode), VEK_BAD_DATA);
        EXPECT_EQ(mode.clock, 7);
    }
    attach(withTiming(edidWith(0, 0)));
    VekDisplayMode mode{};
    EXPECT_EQ(vekHdmiModeRead(0, &mode), VEK_OK);
    EXPECT_EQ(mode.clock, 148500);
}

TEST_F(DisplayOnPath, KeepsTheLastEdidWhenTheNextReadFails)
{
    attach(edidWith(0, 0));
    ASSERT_EQ(validityOfChannel0(), 1);
    attach({});
    EXPECT_EQ(validityOfChannel0(), VEK_NO_RESPONSE);
    CapturedOutput output;
    EXPECT_EQ(do_edid_parse(nullptr), VEK_OK);
    EXPECT_THAT(output.take(), HasSubstr("Manufacturer: TVA"));
}

TEST_F(DisplayOnPath, SaysSoWhenItsPhyDoesNotLock)
{
    attach(edidWith(0, 0));
    EXPECT_EQ(vekHdmiPhyEnd(0), VEK_TIMED_OUT);
}

TEST_F(DisplayOnPath, IsNotAvailableOverAPathWithoutBuses)
{
    openWithoutBuses();
    EXPECT_EQ(validityOfChannel0(), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekHdmiEDIDRead(0), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekHdmiPhyStart(0), VEK_NOT_AVAILABLE);
    uint8_t byte = 0;
    EXPECT_EQ(vekI2cRead(0, 0x50, 0, 1, &byte), VEK_NOT_AVAILABLE);
}

}  // namespace
