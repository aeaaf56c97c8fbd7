#ifndef VEK_DRIVERS_ZOOM_VIDEO_H
#define VEK_DRIVERS_ZOOM_VIDEO_H

#include <cstdint>

#include "address_space.h"
#include "i2c_bus.h"

namespace vek
{

/// The two zoom-video capture ports in the register region. Each has 16 bytes of capture registers, those of port 0
/// first, and behind both 32 bytes of window registers:
///
///     capture registers, at 0x100c0 and 0x100d0
///     0x00  32  control      bit 0  the capture logic runs: it measures the incoming picture
///                            bit 1  the window is shown
///     0x0c  16  width        of the incoming picture in pixels, read-only
///     0x0e  16  height       of the incoming picture in lines, read-only
///
///     window registers, at 0x100e0 and 0x10100
///     0x00  32  set-up       bit 31 the port is set up, bit 0 layer, bit 1 I2C channel and bit 2 IICSA level of the
///                            decoder
///     0x04  32  position     x in bits 15:0, y in bits 31:16
///     0x08  32  size         width in bits 15:0, height in bits 31:16
///     0x0c  32  cut          columns cut from the left of the picture
///     0x10  32  scale        zoom exponents: horizontal in bits 1:0, vertical in bits 5:4
///     0x14  32  display      bit 31 the port has been started, bit 0 display controller
///
/// Width and height are 0 from the moment the capture logic starts until it has seen a whole frame, 40 ms at most, and
/// as long as there is no picture. When it stops they keep what they hold. What has no function holds what is written.
namespace zoom_video
{

constexpr int kPorts = 2;
constexpr std::uint64_t kBase = 0x100c0;
constexpr std::uint64_t kSize = 0x60;
constexpr std::uint64_t kCaptureStep = 0x10;
constexpr std::uint64_t kWindows = 0x100e0;
constexpr std::uint64_t kWindowStep = 0x20;

constexpr std::uint64_t kControl = 0x00;
constexpr std::uint64_t kWidth = 0x0c;
constexpr std::uint64_t kHeight = 0x0e;

constexpr std::uint32_t kControlCapture = 1U << 0;
constexpr std::uint32_t kControlShow = 1U << 1;

constexpr std::uint64_t kSetUp = 0x00;
constexpr std::uint64_t kPosition = 0x04;
constexpr std::uint64_t kExtent = 0x08;
constexpr std::uint64_t kCut = 0x0c;
constexpr std::uint64_t kScale = 0x10;
constexpr std::uint64_t kDisplay = 0x14;

constexpr std::uint32_t kSetUpDone = 1U << 31;
constexpr unsigned kSetUpChannelShift = 1;
constexpr unsigned kSetUpLevelShift = 2;
constexpr unsigned kHighHalfShift = 16;
constexpr unsigned kVerticalScaleShift = 4;
constexpr std::uint32_t kDisplayStarted = 1U << 31;

}  // namespace zoom_video

/// How a port's decoder is reached and which hardware layer shows its window: every number 0 or 1.
struct ZoomVideoSetUp {
    int i2cChannel;
    int iicsaLevel;
    int layer;
};

/// The window of a port.
struct ZoomVideoWindow {
    int x;        ///< In pixels of the display, as y, width and height are; the window has to end within 8192.
    int y;        ///< In lines.
    int width;    ///< 1 or more.
    int height;   ///< 1 or more.
    int cutLeft;  ///< Columns of the incoming picture, 0 to 1023.
    int zoomX;    ///< Exponents of 2, 0 to 3.
    int zoomY;
    int connector;  ///< Display controller that shows the window, 0 or 1.
};

/// What a port reports.
struct ZoomVideoReport {
    ZoomVideoWindow window;  ///< As last started, all 0 before that.
    int cameraWidth;         ///< Of the incoming picture as far as it has been measured, else 0.
    int cameraHeight;
};

/// Drives one capture port. Results are those of enum VekResult.
class ZoomVideoPort
{
public:
    /// `port` is 0 or 1.
    ZoomVideoPort(AddressSpace& registers, int port);

    /// Sets up the port's decoder on `bus` and notes how. VEK_BAD_ARGUMENT for a number out of range, VEK_NO_RESPONSE
    /// when no decoder answers: the port stays as it was then.
    int setUp(I2cBus& bus, const ZoomVideoSetUp& setUp);

    /// Shows the picture in a window. VEK_BAD_ARGUMENT for a number out of range, VEK_NO_RESPONSE before the port has
    /// been set up: the port stays as it was then.
    int start(const ZoomVideoWindow& window);

    /// Takes the window away and stops the capture logic.
    int stop();

    /// Shows the picture again as it was last started. VEK_NO_RESPONSE before that.
    int restart();

    /// `report` is touched on success only.
    int report(ZoomVideoReport& report);

private:
    int run();
    int writeControl(std::uint32_t set, std::uint32_t clear);
    int readCapture(std::uint64_t offset, unsigned width, std::uint32_t& value);
    int readWindow(std::uint64_t offset, std::uint32_t& value);
    int writeWindow(std::uint64_t offset, std::uint32_t value);

    AddressSpace& registers_;
    std::uint64_t capture_;
    std::uint64_t window_;
};

}  // namespace vek

#endif
