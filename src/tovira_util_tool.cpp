// The entry point: opens one access path to a card and runs the console over it.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "tovira_parse/dispatcher.h"
#include "tovira_parse/hex_digits.h"
#include "tovira_parse/line_editor.h"
#include "tovira_parse/options.h"
#include "tovira_parse/terminal.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

// A file or a device that is opened later must not take the place of a standard stream that is closed. What stands
// there instead, a pipe without a writer, is at its end for a reader and fails a writer, as a closed stream does; and
// it needs no /dev.
void occupyStandardStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        int ends[2];
        // The reading end gets the lowest number that is free.
        if (fcntl(descriptor, F_GETFD) < 0 && pipe(ends) == 0) {
            close(ends[1]);
        }
    }
}

// Output to a pipe or a file goes out in large pieces from memory that need not be asked for; a terminal keeps its
// lines.
void prepareOutput()
{
    constexpr std::size_t kOutputBuffer = 0x10000;
    static char buffer[kOutputBuffer];
    if (isatty(STDOUT_FILENO) == 0) {
        setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
    }
}

// The line that every run begins with. The first use of printf would cost a short run a fiftieth of its time.
void announcePath(const char* path)
{
    constexpr std::size_t kLongestChip = 16;
    char chip[kLongestChip + 1];
    *putHex(chip, get_device_id(), 1) = '\0';
    fputs("enter command line with ", stdout);
    fputs(path, stdout);
    fputs(" for QZ", stdout);
    fputs(chip, stdout);
    puts("!");
}

bool openDriverDevice(const char* progName)
{
    if (vekRwOpen(set_card) < 0) {
        puts("Open /dev/tovira device error");
        progHelp(progName);
        return false;
    }
    announcePath("/dev/vekrw");
    return true;
}

void announceOpenedPath()
{
    const int mode = get_s_type();
    if (mode == VEK_ACCESS_SERIAL) {
        announcePath("serial port");
    } else if (mode == VEK_ACCESS_MEM) {
        announcePath("/dev/mem");
    }
}

void runConsole()
{
    while (getCmdLine() != 1 && parseAndRunCmd() != kStatusQuit) {
    }
}

}  // namespace

int main(int argc, char** argv)
{
    occupyStandardStreams();
    prepareOutput();
    // A file that meets the limit of its size fails like one on a full disk.
    signal(SIGXFSZ, SIG_IGN);
    guardBusErrors();
    StartOptions options = {.commandText = "", .openResult = 0, .interactive = 1};
    options_parse_args(&options, argc, argv);
    if (options.openResult != 0) {
        announceOpenedPath();
    } else if (!openDriverDevice(argc > 0 ? argv[0] : "tovira_util_tool")) {
        return EXIT_FAILURE;
    }
    if (options.interactive == 1) {
        runConsole();
    } else {
        parseAndRunOpt(options.commandText);
    }
    vekClose();
    return EXIT_SUCCESS;
}
