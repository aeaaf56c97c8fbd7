// The zoom-video capture ports: set-up, capture into a window, and the size of the picture that comes in.

#include <cstdint>
#include <cstdio>
#include <span>
#include <string_view>

#include "tovira_parse/handlers.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/sub_commands.h"
#include "tovira_parse/text.h"
#include "tovira_parse/wait.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

// Where the capture logic of a port stands in the register region.
struct CaptureRegisters {
    std::uint32_t control;  ///< long
    std::uint32_t width;    ///< word, pixels of the incoming picture
    std::uint32_t height;   ///< word, lines
};

constexpr CaptureRegisters kFirstPort = {.control = 0x100c0, .width = 0x100cc, .height = 0x100ce};
constexpr CaptureRegisters kOtherPort = {.control = 0x100d0, .width = 0x100dc, .height = 0x100de};
constexpr std::uint32_t kCaptureOn = 1;
constexpr std::uint32_t kMeasuringMicroseconds = 100'000;

// The port that was named last, whichever sub-command named it; none yet below 0.
std::int32_t id = -1;

// Takes decimal numbers, in their order, as far as the arguments reach.
void takeNumbers(Tokens& arguments, std::span<std::int32_t* const> numbers)
{
    for (std::int32_t* const number : numbers) {
        const char* const token = arguments.argument();
        if (token == nullptr) {
            return;
        }
        *number = decimal32(token);
    }
}

// Runs a sub-command on the port that is named, and from then on remembered, or on the one remembered.
template <int (*Run)(Tokens& arguments)>
int onPort(Tokens& arguments)
{
    takeNumbers(arguments, {{&id}});
    return id >= 0 ? Run(arguments) : kStatusBadArgument;
}

int initPort(Tokens& arguments)
{
    std::int32_t i2cChannel = 0;
    std::int32_t i2cSa = 0;
    std::int32_t layer = 0;
    takeNumbers(arguments, {{&i2cChannel, &i2cSa, &layer}});
    vekZoomVideoInit(id, i2cChannel, i2cSa, layer);
    return kStatusDone;
}

std::int32_t readSize(std::uint32_t address)
{
    std::uint16_t size = 0;
    vekRegReadWord(address, &size);
    return size;
}

// Measures the incoming picture and fills in what is 0 of a size.
void detectSize(std::int32_t& width, std::int32_t& height)
{
    const CaptureRegisters& port = id == 0 ? kFirstPort : kOtherPort;
    std::uint32_t control = 0;
    vekRegReadLong(port.control, &control);
    vekRegWriteLong(port.control, control | kCaptureOn);
    waitMicroseconds(kMeasuringMicroseconds);
    if (width == 0) {
        width = readSize(port.width);
    }
    if (height == 0) {
        height = readSize(port.height);
    }
}

int startPort(Tokens& arguments)
{
    std::int32_t w = 0;
    std::int32_t h = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t cutLeft = 0;
    std::int32_t zoomw = 0;
    std::int32_t zoomh = 0;
    std::int32_t connector = 0;
    takeNumbers(arguments, {{&w, &h, &x, &y, &cutLeft, &zoomw, &zoomh, &connector}});
    if (w == 0 || h == 0) {
        detectSize(w, h);
        if (w == 0 || h == 0) {
            return kStatusBadArgument;
        }
    }
    vekZoomVideoStart(id, x, y, w, h, cutLeft, zoomw, zoomh, connector);
    return kStatusDone;
}

int stopPort(Tokens& /*arguments*/)
{
    vekZoomVideoStop(id);
    return kStatusDone;
}

int restartPort(Tokens& /*arguments*/)
{
    vekZoomVideoRestart(id);
    return kStatusDone;
}

int showPort(Tokens& /*arguments*/)
{
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t w = 0;
    std::int32_t h = 0;
    std::int32_t cutLeft = 0;
    std::int32_t zoomw = 0;
    std::int32_t zoomh = 0;
    std::int32_t connector = 0;
    std::int32_t cameraW = 0;
    std::int32_t cameraH = 0;
    vekZoomVideoGetParm(id, &x, &y, &w, &h, &cutLeft, &zoomw, &zoomh, &connector, &cameraW, &cameraH);
    printf("Zoom video [%d]: X=%d Y=%d W=%d H=%d CutLeft=%d ZoomW=%d ZoomH=%d Connector=%d CameraW=%d CameraH=%d\n", id,
           x, y, w, h, cutLeft, zoomw, zoomh, connector, cameraW, cameraH);
    return kStatusDone;
}

constexpr SubCommand<Tokens> kSubCommands[] = {
    {"INIT", onPort<initPort>},       {"START", onPort<startPort>}, {"STOP", onPort<stopPort>},
    {"RESTART", onPort<restartPort>}, {"INFO", onPort<showPort>},
};

}  // namespace

int doZV(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    const char* const subCommand = tokens.keyword();
    constexpr int kUnknown = 1;
    const int status = runSubCommand(kSubCommands, subCommand == nullptr ? "" : subCommand, tokens, kUnknown);
    if (status == kUnknown) {
        puts("Invalid zoom video command. Use help or ? [zc] for command info");
        return kStatusBadArgument;
    }
    return status;
}
