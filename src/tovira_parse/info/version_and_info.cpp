// The driver's version, and the live display of the use of video memory.

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "tovira_parse/handlers.h"
#include "tovira_parse/heap.h"
#include "tovira_parse/terminal.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

struct DriverVersion {
    int major;
    int minor;
    int third;
    int fourth;
};

// Oldest driver whose information can be displayed.
constexpr int kFirstMajorWithInfo = 1;

constexpr int kCtrlC = 3;
constexpr unsigned kRefreshSeconds = 1;

// The line is drawn over itself with backspaces, which work with the terminal raw. It is this long when no value is
// wider than its field.
constexpr char kBackOverLine[] =
    "\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b";
static_assert(sizeof kBackOverLine == 44 + 1);
constexpr int kBlankLineLength = 38;
constexpr int kTitleLength = 15;

int readVersion(DriverVersion& version, const char* title)
{
    const int result = vekRvtcoreVer(&version.major, &version.minor, &version.third, &version.fourth);
    if (result == 0) {
        printf("%s%d.%d.%d.%d\n", title, version.major, version.minor, version.third, version.fourth);
    } else {
        printf("get rvtcore version failed with err=%d\n", result);
    }
    return result;
}

bool endsDisplay(int key)
{
    return key == 'q' || key == 'Q' || key == kCtrlC;
}

// Draws the use of video memory again and again. Returns at a key that ends it, or when nobody can see it any more,
// with the last result of the library, or with what the library fails with.
int drawUntilKey(gpu_info& info, bool onTerminal, int lastResult)
{
    for (;;) {
        if (keyIsWaiting()) {
            const int key = readKey();
            // The end of a terminal's input is its hang-up; the end of a file there leaves the display alone.
            if (endsDisplay(key) || (key == EOF && onTerminal)) {
                return lastResult;
            }
        }
        lastResult = vekInfoRead(&info);
        if (lastResult != 0) {
            return lastResult;
        }
        printf("%s%6.1dmb total, %6.1dmb free, %6.1dmb used", kBackOverLine, info.total, info.free, info.used);
        if (fflush(stdout) != 0 && errno != EINTR && errno != EAGAIN) {
            return lastResult;
        }
        sleep(kRefreshSeconds);
    }
}

void displayInfo(int lastResult)
{
    const HeapPointer<gpu_info> info(static_cast<gpu_info*>(calloc(1, sizeof(gpu_info))));
    if (info == nullptr) {
        fputs("fail to alloc gpu_info struct!", stdout);
        return;
    }
    puts("Press q to exit this command");
    flushTerminalOutput();
    const bool onTerminal = enterRawTerminal();
    printf("Video Mem (M): %*s", kBlankLineLength, "");
    fflush(stdout);
    const int result = drawUntilKey(*info, onTerminal, lastResult);
    if (result == 0) {
        printf("%.*s", kBlankLineLength, kBackOverLine);
    }
    printf("%.*s\n", kTitleLength, kBackOverLine);
    if (result != 0) {
        printf("get vram information failed with err=%d\n", result);
    }
    fflush(stdout);
    if (onTerminal) {
        leaveRawTerminal();
    }
}

int showInfo()
{
    DriverVersion version = {};
    const int result = readVersion(version, "Driver version ");
    if (version.major < kFirstMajorWithInfo) {
        puts("To support display of GPU information, the version number must be greater than 1.0.0.0");
        return kStatusDone;
    }
    displayInfo(result);
    return kStatusDone;
}

}  // namespace

int doVer(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    char* const word = tokens.word();
    if (word == nullptr) {
        return kStatusBadArgument;
    }
    upperCase(word);
    const std::string_view keyword = word;
    if (keyword == "VERSION" || keyword == "VER") {
        DriverVersion version = {};
        readVersion(version, "");
        return kStatusDone;
    }
    return keyword == "INFO" ? showInfo() : kStatusBadArgument;
}
