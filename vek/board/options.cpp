#include "board/options.h"

#include <getopt.h>

#include <array>
#include <charconv>
#include <cstring>
#include <iterator>
#include <optional>

#include "path/driver_path.h"
#include "serial/tty_port.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr std::array<option, 7> kOptions{{{"card", required_argument, nullptr, 'c'},
                                          {"pty", no_argument, nullptr, 'p'},
                                          {"tty", required_argument, nullptr, 't'},
                                          {"baud", required_argument, nullptr, 'b'},
                                          {"once", no_argument, nullptr, 'o'},
                                          {"help", no_argument, nullptr, 'h'},
                                          {nullptr, 0, nullptr, 0}}};

std::optional<int> decimal(const char* text)
{
    int number = 0;
    const char* const end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, number);
    if (error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return number;
}

BoardOptions refused(const char* program, const char* reason)
{
    std::fprintf(stderr, "%s: %s\n", program, reason);
    return {.action = BoardOptions::Action::kRefuse};
}

}  // namespace

BoardOptions parseBoardOptions(int argc, char** argv)
{
    BoardOptions options;
    bool pty = false;
    int found = 0;
    while ((found = getopt_long(argc, argv, "", kOptions.data(), nullptr)) != -1) {
        switch (found) {
            case 'c':
                options.card = decimal(optarg).value_or(-1);
                break;
            case 'p':
                pty = true;
                break;
            case 't':
                options.tty = optarg;
                break;
            case 'b':
                options.baudRate = decimal(optarg).value_or(-1);
                break;
            case 'o':
                options.once = true;
                break;
            case 'h':
                return {.action = BoardOptions::Action::kHelp};
            default:
                return {.action = BoardOptions::Action::kRefuse};
        }
    }
    if (optind < argc) {
        return refused(argv[0], "no arguments but options are known");
    }
    if (fitCards() != VEK_OK) {
        return {.action = BoardOptions::Action::kFail};
    }
    if (driverPath(options.card) == nullptr) {
        return refused(argv[0], "there is no such card");
    }
    if (pty && options.tty != nullptr) {
        return refused(argv[0], "--pty and --tty exclude each other");
    }
    if (!supportsBaudRate(options.baudRate)) {
        return refused(argv[0], "the baud rate may be 9600, 19200, 38400, 115200 or 460800");
    }
    return options;
}

void printBoardUsage(std::FILE* out, const char* program)
{
    std::fprintf(out,
                 "Usage: %s [--card N] [--pty | --tty DEVICE [--baud RATE]] [--once]\n"
                 "Serves a simulated card over a serial line, as the firmware of a board does.\n"
                 "Prints the name of its terminal.\n"
                 "  --card N      card 0 (QZ201, the default) or 1 (QZ202), or those that VEK_CARD_DESCRIPTION names\n"
                 "  --pty         make a pseudo-terminal and print its name (the default)\n"
                 "  --tty DEVICE  serve on a serial line of this host\n"
                 "  --baud RATE   9600 (the default), 19200, 38400, 115200 or 460800\n"
                 "  --once        end when the line hangs up\n"
                 "  --help        print this text\n",
                 program);
}

}  // namespace vek
