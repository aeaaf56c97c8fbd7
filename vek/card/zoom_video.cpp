#include "card/zoom_video.h"

#include "card/items.h"
#include "vek.h"

namespace vek
{

ZoomVideoPorts::Size ZoomVideoPorts::measured(const Port& port) const
{
    if (!port.capturing) {
        return port.held;
    }
    const VideoPicture picture = port.decoder->picture();
    const bool wholeFrameSeen = clock_.nanoseconds() - port.captureStart >= picture.frameNanoseconds;
    return wholeFrameSeen ? Size{picture.width, picture.height} : Size{};
}

/// Puts the sizes of the pictures into an image of the registers.
void ZoomVideoPorts::putSizes(Bytes& bytes) const
{
    unsigned char* capture = bytes.data();
    for (const Port& port : ports_) {
        const Size size = measured(port);
        storeItem(capture + zoom_video::kWidth, sizeof size.width, size.width);
        storeItem(capture + zoom_video::kHeight, sizeof size.height, size.height);
        capture += zoom_video::kCaptureStep;
    }
}

void ZoomVideoPorts::followControl(Port& port, std::uint64_t control)
{
    const bool capture = (control & zoom_video::kControlCapture) != 0;
    if (capture == port.capturing) {
        return;
    }
    port.held = measured(port);
    port.capturing = capture;
    port.captureStart = clock_.nanoseconds();
}

ReadResult ZoomVideoPorts::read(std::uint64_t address, unsigned width)
{
    if (address > zoom_video::kSize - width) {
        return kUnanswered;
    }
    Bytes bytes = bytes_;
    putSizes(bytes);
    return {VEK_OK, loadItem(bytes.data() + address, width)};
}

int ZoomVideoPorts::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (address > zoom_video::kSize - width) {
        return VEK_NO_RESPONSE;
    }
    // What lands on the read-only registers is never seen: putSizes() covers it.
    storeItem(bytes_.data() + address, width, value);
    const unsigned char* capture = bytes_.data();
    for (Port& port : ports_) {
        followControl(port, loadItem(capture + zoom_video::kControl, sizeof(std::uint32_t)));
        capture += zoom_video::kCaptureStep;
    }
    return VEK_OK;
}

}  // namespace vek
