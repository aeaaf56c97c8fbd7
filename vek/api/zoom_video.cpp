#include "drivers/zoom_video.h"

#include <cstdint>
#include <initializer_list>

#include "api/channels.h"
#include "api/spaces.h"
#include "vek.h"

namespace vek
{
namespace
{

/// Finds the registers that a port of the open path's card lies in.
FoundChannel<AddressSpace> findPort(int id)
{
    auto found = findSpace<&AccessPath::registerRegion>();
    if (found.result == VEK_OK && (id < 0 || id >= zoom_video::kPorts)) {
        found.result = VEK_BAD_ARGUMENT;
    }
    return found;
}

/// Runs one of the operations of a port that take no argument.
int runOnPort(int id, int (ZoomVideoPort::*operation)())
{
    const auto [found, registers] = findPort(id);
    if (found != VEK_OK) {
        return found;
    }
    const CardHold hold(openCardLock());
    ZoomVideoPort port(*registers, id);
    return (port.*operation)();
}

}  // namespace
}  // namespace vek

int vekZoomVideoInit(int id, int i2c_channel, int i2c_sa, int layer)
{
    const auto [found, registers] = vek::findPort(id);
    if (found != VEK_OK) {
        return found;
    }
    const auto [result, bus] = vek::findChannel<&vek::AccessPath::i2c>(i2c_channel, VEK_BAD_ARGUMENT);
    if (result != VEK_OK) {
        return result;
    }
    const vek::CardHold hold(vek::openCardLock());
    return vek::ZoomVideoPort(*registers, id)
        .setUp(*bus, {.i2cChannel = i2c_channel, .iicsaLevel = i2c_sa, .layer = layer});
}

int vekZoomVideoStart(int id, int x, int y, int w, int h, int cut_left, int zoomw, int zoomh, int connector)
{
    const auto [found, registers] = vek::findPort(id);
    if (found != VEK_OK) {
        return found;
    }
    const vek::CardHold hold(vek::openCardLock());
    return vek::ZoomVideoPort(*registers, id)
        .start({.x = x,
                .y = y,
                .width = w,
                .height = h,
                .cutLeft = cut_left,
                .zoomX = zoomw,
                .zoomY = zoomh,
                .connector = connector});
}

int vekZoomVideoStop(int id)
{
    return vek::runOnPort(id, &vek::ZoomVideoPort::stop);
}

int vekZoomVideoRestart(int id)
{
    return vek::runOnPort(id, &vek::ZoomVideoPort::restart);
}

int vekZoomVideoGetParm(int id, int32_t* x, int32_t* y, int32_t* w, int32_t* h, int32_t* cut_left, int32_t* zoomw,
                        int32_t* zoomh, int32_t* connector, int32_t* camera_w, int32_t* camera_h)
{
    const auto [found, registers] = vek::findPort(id);
    if (found != VEK_OK) {
        return found;
    }
    for (const int32_t* cell : {x, y, w, h, cut_left, zoomw, zoomh, connector, camera_w, camera_h}) {
        if (cell == nullptr) {
            return VEK_BAD_ARGUMENT;
        }
    }
    const vek::CardHold hold(vek::openCardLock());
    vek::ZoomVideoReport report{};
    const int result = vek::ZoomVideoPort(*registers, id).report(report);
    if (result != VEK_OK) {
        return result;
    }
    *x = report.window.x;
    *y = report.window.y;
    *w = report.window.width;
    *h = report.window.height;
    *cut_left = report.window.cutLeft;
    *zoomw = report.window.zoomX;
    *zoomh = report.window.zoomY;
    *connector = report.window.connector;
    *camera_w = report.cameraWidth;
    *camera_h = report.cameraHeight;
    return VEK_OK;
}
