#include "drivers/zoom_video.h"

#include <initializer_list>

#include "drivers/saa7111a.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr unsigned kLong = 4;
constexpr unsigned kWord = 2;
constexpr std::uint32_t kLowHalf = 0xffff;

constexpr int kDisplayEnd = 8192;
constexpr int kMaxCut = 1023;
constexpr int kMaxZoom = 3;

bool within(int value, int lowest, int highest)
{
    return value >= lowest && value <= highest;
}

bool isSwitch(int value)
{
    return within(value, 0, 1);
}

/// Whether a stretch of the display from `start` on lies within the coordinates there are.
bool fits(int start, int length)
{
    return within(start, 0, kDisplayEnd - 1) && within(length, 1, kDisplayEnd - start);
}

bool isValid(const ZoomVideoWindow& window)
{
    return fits(window.x, window.width) && fits(window.y, window.height) && within(window.cutLeft, 0, kMaxCut) &&
           within(window.zoomX, 0, kMaxZoom) && within(window.zoomY, 0, kMaxZoom) && isSwitch(window.connector);
}

std::uint32_t packed(int low, int high, unsigned shift = zoom_video::kHighHalfShift)
{
    return static_cast<std::uint32_t>(low) | static_cast<std::uint32_t>(high) << shift;
}

}  // namespace

ZoomVideoPort::ZoomVideoPort(AddressSpace& registers, int port)
    : registers_(registers),
      capture_(zoom_video::kBase + static_cast<unsigned>(port) * zoom_video::kCaptureStep),
      window_(zoom_video::kWindows + static_cast<unsigned>(port) * zoom_video::kWindowStep)
{
}

int ZoomVideoPort::readCapture(std::uint64_t offset, unsigned width, std::uint32_t& value)
{
    const auto [result, read] = registers_.read(capture_ + offset, width);
    if (result == VEK_OK) {
        value = static_cast<std::uint32_t>(read);
    }
    return result;
}

int ZoomVideoPort::readWindow(std::uint64_t offset, std::uint32_t& value)
{
    const auto [result, read] = registers_.read(window_ + offset, kLong);
    if (result == VEK_OK) {
        value = static_cast<std::uint32_t>(read);
    }
    return result;
}

int ZoomVideoPort::writeWindow(std::uint64_t offset, std::uint32_t value)
{
    return registers_.write(window_ + offset, kLong, value);
}

int ZoomVideoPort::writeControl(std::uint32_t set, std::uint32_t clear)
{
    std::uint32_t control = 0;
    const int result = readCapture(zoom_video::kControl, kLong, control);
    return result == VEK_OK ? registers_.write(capture_ + zoom_video::kControl, kLong, (control & ~clear) | set)
                            : result;
}

int ZoomVideoPort::setUp(I2cBus& bus, const ZoomVideoSetUp& setUp)
{
    if (!isSwitch(setUp.i2cChannel) || !isSwitch(setUp.iicsaLevel) || !isSwitch(setUp.layer)) {
        return VEK_BAD_ARGUMENT;
    }
    const int result = setUpSaa7111a(bus, setUp.iicsaLevel == 1);
    if (result != VEK_OK) {
        return result;
    }
    return writeWindow(zoom_video::kSetUp, zoom_video::kSetUpDone | static_cast<std::uint32_t>(setUp.layer) |
                                               packed(0, setUp.i2cChannel, zoom_video::kSetUpChannelShift) |
                                               packed(0, setUp.iicsaLevel, zoom_video::kSetUpLevelShift));
}

int ZoomVideoPort::start(const ZoomVideoWindow& window)
{
    if (!isValid(window)) {
        return VEK_BAD_ARGUMENT;
    }
    std::uint32_t setUp = 0;
    int result = readWindow(zoom_video::kSetUp, setUp);
    if (result == VEK_OK && (setUp & zoom_video::kSetUpDone) == 0) {
        result = VEK_NO_RESPONSE;
    }
    struct Setting {
        std::uint64_t offset;
        std::uint32_t value;
    };
    const Setting settings[] = {
        {zoom_video::kPosition, packed(window.x, window.y)},
        {zoom_video::kExtent, packed(window.width, window.height)},
        {zoom_video::kCut, packed(window.cutLeft, 0)},
        {zoom_video::kScale, packed(window.zoomX, window.zoomY, zoom_video::kVerticalScaleShift)},
        {zoom_video::kDisplay, zoom_video::kDisplayStarted | static_cast<std::uint32_t>(window.connector)},
    };
    for (const Setting& setting : settings) {
        if (result == VEK_OK) {
            result = writeWindow(setting.offset, setting.value);
        }
    }
    return result == VEK_OK ? run() : result;
}

int ZoomVideoPort::run()
{
    return writeControl(zoom_video::kControlCapture | zoom_video::kControlShow, 0);
}

int ZoomVideoPort::stop()
{
    return writeControl(0, zoom_video::kControlCapture | zoom_video::kControlShow);
}

int ZoomVideoPort::restart()
{
    std::uint32_t display = 0;
    const int result = readWindow(zoom_video::kDisplay, display);
    if (result != VEK_OK) {
        return result;
    }
    return (display & zoom_video::kDisplayStarted) != 0 ? run() : VEK_NO_RESPONSE;
}

int ZoomVideoPort::report(ZoomVideoReport& report)
{
    std::uint32_t position = 0;
    std::uint32_t size = 0;
    std::uint32_t cut = 0;
    std::uint32_t scale = 0;
    std::uint32_t display = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    for (const int result : {readWindow(zoom_video::kPosition, position), readWindow(zoom_video::kExtent, size),
                             readWindow(zoom_video::kCut, cut), readWindow(zoom_video::kScale, scale),
                             readWindow(zoom_video::kDisplay, display), readCapture(zoom_video::kWidth, kWord, width),
                             readCapture(zoom_video::kHeight, kWord, height)}) {
        if (result != VEK_OK) {
            return result;
        }
    }
    report = {
        .window = {.x = static_cast<int>(position & kLowHalf),
                   .y = static_cast<int>(position >> zoom_video::kHighHalfShift),
                   .width = static_cast<int>(size & kLowHalf),
                   .height = static_cast<int>(size >> zoom_video::kHighHalfShift),
                   .cutLeft = static_cast<int>(cut & kLowHalf),
                   .zoomX = static_cast<int>(scale & kMaxZoom),
                   .zoomY = static_cast<int>(scale >> zoom_video::kVerticalScaleShift & kMaxZoom),
                   .connector = static_cast<int>(display & 1U)},
        .cameraWidth = static_cast<int>(width),
        .cameraHeight = static_cast<int>(height),
    };
    return VEK_OK;
}

}  // namespace vek
