#include "card/zoom_video.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>
#include <vector>

#include "card/i2c_simulated_bus.h"
#include "card/register_region.h"
#include "card/saa7111a.h"
#include "drivers/i2c_transfer.h"
#include "drivers/zoom_video.h"
#include "test_clock.h"
#include "vek.h"

namespace
{

using vek::AddressWindow;
using vek::I2cSeat;
using vek::Saa7111a;
using vek::SimulatedI2cBus;
using vek::VideoSignal;
using vek::ZoomVideoPort;
using vek::ZoomVideoReport;
using vek::ZoomVideoWindow;

constexpr std::uint64_t kControl0 = 0x100c0;
constexpr std::uint64_t kWidth0 = 0x100cc;
constexpr std::uint64_t kHeight0 = 0x100ce;
constexpr std::uint64_t kControl1 = 0x100d0;
constexpr std::uint64_t kWidth1 = 0x100dc;
constexpr std::uint64_t kHeight1 = 0x100de;

constexpr ZoomVideoWindow kWindow{
    .x = 100, .y = 200, .width = 1440, .height = 1152, .cutLeft = 8, .zoomX = 1, .zoomY = 2, .connector = 1};

class ZoomVideo : public ::testing::Test
{
protected:
    std::uint64_t read(std::uint64_t address, unsigned width)
    {
        const auto [result, value] = registers.read(address, width);
        EXPECT_EQ(result, VEK_OK);
        return value;
    }

    void write(std::uint64_t address, unsigned width, std::uint64_t value)
    {
        ASSERT_EQ(registers.write(address, width, value), VEK_OK);
    }

    // What the console does to find out the size of the picture.
    void startMeasuring(std::uint64_t control) { write(control, 4, read(control, 4) | 1); }

    void setUp(ZoomVideoPort& port)
    {
        ASSERT_EQ(port.setUp(bus0, {.i2cChannel = 0, .iicsaLevel = 0, .layer = 0}), VEK_OK);
    }

    ZoomVideoReport report(ZoomVideoPort& port)
    {
        ZoomVideoReport found{};
        EXPECT_EQ(port.report(found), VEK_OK);
        return found;
    }

    std::vector<std::uint64_t> allRegisters()
    {
        std::vector<std::uint64_t> values;
        for (std::uint64_t address = kControl0; address < 0x10120; address += 4) {
            values.push_back(read(address, 4));
        }
        return values;
    }

    TestClock clock;
    Saa7111a decoder0{VideoSignal::kPal};
    Saa7111a decoder1{VideoSignal::kNone};
    const std::array<I2cSeat, 1> seats0{{{0x24, &decoder0}}};
    const std::array<I2cSeat, 1> seats1{{{0x25, &decoder1}}};
    SimulatedI2cBus bus0{seats0};
    SimulatedI2cBus bus1{seats1};
    vek::ZoomVideoPorts ports{clock, decoder0, decoder1};
    const std::array<AddressWindow, 1> windows{{{vek::zoom_video::kBase, vek::zoom_video::kSize, &ports}}};
    vek::RegisterRegion registers{windows};
    ZoomVideoPort port0{registers, 0};
    ZoomVideoPort port1{registers, 1};
};

void expectWindow(const ZoomVideoWindow& window, const ZoomVideoWindow& expected)
{
    EXPECT_EQ(window.x, expected.x);
    EXPECT_EQ(window.y, expected.y);
    EXPECT_EQ(window.width, expected.width);
    EXPECT_EQ(window.height, expected.height);
    EXPECT_EQ(window.cutLeft, expected.cutLeft);
    EXPECT_EQ(window.zoomX, expected.zoomX);
    EXPECT_EQ(window.zoomY, expected.zoomY);
    EXPECT_EQ(window.connector, expected.connector);
}

TEST_F(ZoomVideo, ComesUpWithNothingMeasured)
{
    clock.advanceMilliseconds(1000);
    for (const std::uint64_t value : allRegisters()) {
        EXPECT_EQ(value, 0U);
    }
}

TEST_F(ZoomVideo, MeasuresThePictureWithinAFrame)
{
    clock.advanceMilliseconds(123);
    startMeasuring(kControl0);
    EXPECT_EQ(read(kWidth0, 2), 0U);
    clock.advanceNanoseconds(39'999'999);
    EXPECT_EQ(read(kWidth0, 2), 0U);
    EXPECT_EQ(read(kHeight0, 2), 0U);
    clock.advanceNanoseconds(1);
    EXPECT_EQ(read(kWidth0, 2), 720U);
    EXPECT_EQ(read(kHeight0, 2), 576U);
    EXPECT_EQ(read(kWidth0, 4), 576U << 16 | 720U);
    EXPECT_EQ(read(kHeight0, 1), 576U & 0xffU);
}

TEST_F(ZoomVideo, MeasuresNothingWithoutAPicture)
{
    startMeasuring(kControl1);
    clock.advanceMilliseconds(1000);
    EXPECT_EQ(read(kWidth1, 2), 0U);
    EXPECT_EQ(read(kHeight1, 2), 0U);
    EXPECT_EQ(read(kWidth0, 2), 0U);
}

TEST_F(ZoomVideo, GoesOnMeasuringWhenItIsTurnedOnAgain)
{
    startMeasuring(kControl0);
    clock.advanceMilliseconds(30);
    startMeasuring(kControl0);
    clock.advanceMilliseconds(10);
    EXPECT_EQ(read(kWidth0, 2), 720U);
    startMeasuring(kControl0);
    EXPECT_EQ(read(kWidth0, 2), 720U);
}

TEST_F(ZoomVideo, KeepsTheSizeUntilItMeasuresAnew)
{
    startMeasuring(kControl0);
    clock.advanceMilliseconds(50);
    write(kControl0, 4, 0);
    clock.advanceMilliseconds(50);
    EXPECT_EQ(read(kWidth0, 2), 720U);
    EXPECT_EQ(read(kHeight0, 2), 576U);
    startMeasuring(kControl0);
    EXPECT_EQ(read(kWidth0, 2), 0U);
    write(kControl0, 1, 0);
    clock.advanceMilliseconds(50);
    EXPECT_EQ(read(kWidth0, 2), 0U) << "stopped before the frame was over";
}

TEST_F(ZoomVideo, LosesThePictureWithItsInput)
{
    startMeasuring(kControl0);
    clock.advanceMilliseconds(50);
    ASSERT_EQ(read(kWidth0, 2), 720U);
    const std::uint8_t otherInput = 0xc1;
    ASSERT_EQ(vek::writeI2c(bus0, 0x24, 0x02, {&otherInput, 1}), VEK_OK);
    EXPECT_EQ(read(kWidth0, 2), 0U);
}

TEST_F(ZoomVideo, IgnoresWritesToTheSize)
{
    for (const std::uint64_t address : {kWidth0, kHeight0, kWidth1, kHeight1}) {
        write(address, 2, 0x1234);
        EXPECT_EQ(read(address, 2), 0U);
    }
    startMeasuring(kControl0);
    clock.advanceMilliseconds(40);
    write(kWidth0, 4, 0xffffffffU);
    EXPECT_EQ(read(kWidth0, 2), 720U);
}

TEST_F(ZoomVideo, HoldsWhatIsWrittenElsewhere)
{
    for (std::uint64_t address = kControl0; address < 0x10120; address += 4) {
        if (address != kWidth0 && address != kWidth1) {
            write(address, 4, 0xabcd0000U + address);
            EXPECT_EQ(read(address, 4), 0xabcd0000U + address);
        }
    }
    write(0x100c4, 8, 0x1122334455667788U);
    EXPECT_EQ(read(0x100c8, 4), 0x11223344U);
    EXPECT_EQ(ports.read(vek::zoom_video::kSize - 3, 4).result, VEK_NO_RESPONSE);
    EXPECT_EQ(ports.write(vek::zoom_video::kSize, 1, 0), VEK_NO_RESPONSE);
}

TEST_F(ZoomVideo, IsSetUpWithItsDecoder)
{
    EXPECT_EQ(port0.setUp(bus0, {.i2cChannel = 0, .iicsaLevel = 0, .layer = 1}), VEK_OK);
    EXPECT_EQ(read(0x100e0, 4), 0x80000001U);
    EXPECT_EQ(port1.setUp(bus1, {.i2cChannel = 1, .iicsaLevel = 1, .layer = 0}), VEK_OK);
    EXPECT_EQ(read(0x10100, 4), 0x80000006U);
    std::uint8_t brightness = 0;
    ASSERT_EQ(vek::readI2c(bus1, 0x25, 0x0a, {&brightness, 1}), VEK_OK);
    EXPECT_EQ(brightness, 0x80);
}

TEST_F(ZoomVideo, IsNotSetUpWithoutADecoder)
{
    EXPECT_EQ(port0.setUp(bus0, {.i2cChannel = 0, .iicsaLevel = 1, .layer = 0}), VEK_NO_RESPONSE);
    EXPECT_EQ(port0.start(kWindow), VEK_NO_RESPONSE);
    EXPECT_EQ(allRegisters(), std::vector<std::uint64_t>(0x60 / 4, 0));
}

TEST_F(ZoomVideo, IsNotSetUpWithNumbersOutOfRange)
{
    for (const int wrong : {-1, 2, INT_MIN, INT_MAX}) {
        EXPECT_EQ(port0.setUp(bus0, {.i2cChannel = wrong, .iicsaLevel = 0, .layer = 0}), VEK_BAD_ARGUMENT);
        EXPECT_EQ(port0.setUp(bus0, {.i2cChannel = 0, .iicsaLevel = wrong, .layer = 0}), VEK_BAD_ARGUMENT);
        EXPECT_EQ(port0.setUp(bus0, {.i2cChannel = 0, .iicsaLevel = 0, .layer = wrong}), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(allRegisters(), std::vector<std::uint64_t>(0x60 / 4, 0));
}

TEST_F(ZoomVideo, ShowsItsWindow)
{
    setUp(port0);
    EXPECT_EQ(port0.start(kWindow), VEK_OK);
    EXPECT_EQ(read(kControl0, 4), 3U);
    EXPECT_EQ(read(0x100e4, 4), 200U << 16 | 100U);
    EXPECT_EQ(read(0x100e8, 4), 1152U << 16 | 1440U);
    EXPECT_EQ(read(0x100ec, 4), 8U);
    EXPECT_EQ(read(0x100f0, 4), 0x21U);
    EXPECT_EQ(read(0x100f4, 4), 0x80000001U);
    EXPECT_EQ(read(kControl1, 4), 0U);
}

TEST_F(ZoomVideo, ReportsWhatItWasStartedWithAndMeasures)
{
    setUp(port0);
    expectWindow(report(port0).window, {});
    ASSERT_EQ(port0.start(kWindow), VEK_OK);
    expectWindow(report(port0).window, kWindow);
    EXPECT_EQ(report(port0).cameraWidth, 0);
    EXPECT_EQ(report(port0).cameraHeight, 0);
    clock.advanceMilliseconds(40);
    EXPECT_EQ(report(port0).cameraWidth, 720);
    EXPECT_EQ(report(port0).cameraHeight, 576);
    expectWindow(report(port1).window, {});
}

TEST_F(ZoomVideo, TakesTheEndsOfItsRanges)
{
    setUp(port0);
    for (const ZoomVideoWindow& window :
         {ZoomVideoWindow{
              .x = 0, .y = 0, .width = 1, .height = 1, .cutLeft = 0, .zoomX = 0, .zoomY = 0, .connector = 0},
          ZoomVideoWindow{
              .x = 8191, .y = 8191, .width = 1, .height = 1, .cutLeft = 1023, .zoomX = 3, .zoomY = 3, .connector = 1},
          ZoomVideoWindow{
              .x = 0, .y = 0, .width = 8192, .height = 8192, .cutLeft = 0, .zoomX = 3, .zoomY = 0, .connector = 0}}) {
        EXPECT_EQ(port0.start(window), VEK_OK);
        expectWindow(report(port0).window, window);
    }
}

TEST_F(ZoomVideo, RefusesNumbersOutOfRange)
{
    setUp(port0);
    ASSERT_EQ(port0.start(kWindow), VEK_OK);
    struct Range {
        int ZoomVideoWindow::*field;
        int lowest;
        int highest;
    };
    const std::vector<std::uint64_t> before = allRegisters();
    for (const Range& range :
         {Range{&ZoomVideoWindow::x, 0, 8192 - kWindow.width}, Range{&ZoomVideoWindow::y, 0, 8192 - kWindow.height},
          Range{&ZoomVideoWindow::width, 1, 8192 - kWindow.x}, Range{&ZoomVideoWindow::height, 1, 8192 - kWindow.y},
          Range{&ZoomVideoWindow::cutLeft, 0, 1023}, Range{&ZoomVideoWindow::zoomX, 0, 3},
          Range{&ZoomVideoWindow::zoomY, 0, 3}, Range{&ZoomVideoWindow::connector, 0, 1}}) {
        for (const int wrong : {range.lowest - 1, range.highest + 1, INT_MIN, INT_MAX}) {
            ZoomVideoWindow window = kWindow;
            window.*range.field = wrong;
            EXPECT_EQ(port0.start(window), VEK_BAD_ARGUMENT) << wrong;
        }
        EXPECT_EQ(allRegisters(), before);
    }
}

TEST_F(ZoomVideo, NeedsToBeSetUpToStart)
{
    EXPECT_EQ(port0.start(kWindow), VEK_NO_RESPONSE);
    EXPECT_EQ(port0.restart(), VEK_NO_RESPONSE);
    EXPECT_EQ(allRegisters(), std::vector<std::uint64_t>(0x60 / 4, 0));
    setUp(port1);
    EXPECT_EQ(port0.start(kWindow), VEK_NO_RESPONSE) << "set up is the other port";
}

TEST_F(ZoomVideo, StopsAndStartsAgainAsBefore)
{
    setUp(port0);
    EXPECT_EQ(port0.restart(), VEK_NO_RESPONSE) << "never started";
    ASSERT_EQ(port0.start(kWindow), VEK_OK);
    clock.advanceMilliseconds(40);
    EXPECT_EQ(port0.stop(), VEK_OK);
    EXPECT_EQ(read(kControl0, 4), 0U);
    expectWindow(report(port0).window, kWindow);
    EXPECT_EQ(report(port0).cameraWidth, 720);
    EXPECT_EQ(port0.restart(), VEK_OK);
    EXPECT_EQ(read(kControl0, 4), 3U);
    expectWindow(report(port0).window, kWindow);
    EXPECT_EQ(report(port0).cameraWidth, 0) << "measured anew";
}

TEST_F(ZoomVideo, LeavesOtherControlBitsAlone)
{
    setUp(port0);
    write(kControl0, 4, 0xf0);
    ASSERT_EQ(port0.start(kWindow), VEK_OK);
    EXPECT_EQ(read(kControl0, 4), 0xf3U);
    ASSERT_EQ(port0.stop(), VEK_OK);
    EXPECT_EQ(read(kControl0, 4), 0xf0U);
}

TEST_F(ZoomVideo, ReportsRegistersThatDoNotAnswer)
{
    vek::SparseMemory nothing{8};
    ZoomVideoPort port(nothing, 0);
    ZoomVideoReport untouched{.window = kWindow, .cameraWidth = 7, .cameraHeight = 8};
    EXPECT_EQ(port.report(untouched), VEK_NO_RESPONSE);
    EXPECT_EQ(untouched.cameraWidth, 7);
    EXPECT_EQ(port.start(kWindow), VEK_NO_RESPONSE);
    EXPECT_EQ(port.stop(), VEK_NO_RESPONSE);
    EXPECT_EQ(port.restart(), VEK_NO_RESPONSE);
    EXPECT_EQ(port.setUp(bus0, {.i2cChannel = 0, .iicsaLevel = 0, .layer = 0}), VEK_NO_RESPONSE);
}

}  // namespace
