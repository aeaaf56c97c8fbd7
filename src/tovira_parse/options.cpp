#include "tovira_parse/options.h"

#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tovira_parse/numbers.h"
#include "vek.h"

std::int32_t set_card = 0;

namespace
{

constexpr const char* kShortOptions = "t:c:m:h:g:";

constexpr option long_options[] = {
    {"help", no_argument, nullptr, 'h'},
    {"cmd", required_argument, nullptr, 'c'},
    {"mem", required_argument, nullptr, 'm'},
    {"tty", required_argument, nullptr, 't'},
    {"card", required_argument, nullptr, 'd'},
    {"gpu", required_argument, nullptr, 'g'},
    {nullptr, 0, nullptr, 0},
};

constexpr std::uint64_t kCards = 4;

constexpr int kDefaultBaudRate = 9600;
constexpr std::size_t kLongestSerialName = 26;

// The number stands in the second word of the command line, whatever the option's own argument is: `--card id` is meant
// to come first.
void doParseCard(const char* secondWord)
{
    const auto card = static_cast<std::uint64_t>(htoi(secondWord == nullptr ? "" : secondWord));
    if (card < kCards) {
        set_card = static_cast<std::int32_t>(card);
    } else {
        puts("Set card id is out of range");
    }
}

[[noreturn]] void endForUnknownOption()
{
    puts("Error: unknown option!");
    exit(EXIT_FAILURE);
}

[[noreturn]] void endForFailedOpen(const char* device, const char* progName)
{
    printf("Open %s device error\n", device);
    progHelp(progName);
    exit(EXIT_FAILURE);
}

int baudRate(const char* text)
{
    constexpr int kDecimal = 10;
    const int rate = static_cast<int>(strtol(text, nullptr, kDecimal));
    return rate == 0 ? kDefaultBaudRate : rate;
}

}  // namespace

void options_parse_args(StartOptions* options, int argc, char** argv)
{
    if (argc < 2) {
        return;
    }
    int option = 0;
    while ((option = getopt_long(argc, argv, kShortOptions, long_options, nullptr)) != -1) {
        switch (option) {
            case 'c':
                doParseCmd(options, optarg);
                break;
            case 'd':
                doParseCard(argv[2]);
                break;
            case 'g':
                doGetDeviceId(argv[0], optarg);
                break;
            case 'h':
                doParseHelp(argv[0]);
            case 'm':
                // Windows that are not complete open nothing, and must not fall back to the driver device either.
                options->openResult = argc;
                doParseMemOpen(options, argv[0], optarg);
                break;
            case 't':
                doParseSerialOpen(options, argv[0], optarg);
                break;
            default:
                endForUnknownOption();
        }
    }
}

void doParseCmd(StartOptions* options, const char* text)
{
    const std::size_t length = strlen(text);
    if (length > kCommandTextSize) {
        puts("Too long args!");
        exit(EXIT_FAILURE);
    }
    if (length == kCommandTextSize) {
        fputs("--cmd: a text of 256 characters leaves no place for its terminator\n", stderr);
        abort();
    }
    memcpy(options->commandText, text, length + 1);
    options->interactive = 0;
}

void doParseMemOpen(StartOptions* options, const char* progName, const char* text)
{
    std::uint64_t regStart = 0;
    std::uint64_t regSize = 0;
    std::uint64_t vramStart = 0;
    std::uint64_t vramSize = 0;
    // What cannot be read stays 0, and a pair with a 0 in it opens nothing.
    // NOLINTNEXTLINE(cert-err34-c)
    sscanf(text, "%lx,%lx,%lx,%lx", &regStart, &regSize, &vramStart, &vramSize);
    printf("mem: reg_start=0x%lx reg_size=0x%lx vram_start=0x%lx vram_size=0x%lx\n", regStart, regSize, vramStart,
           vramSize);
    const bool registersComplete = regStart != 0 && regSize != 0;
    const bool videoMemoryComplete = vramStart != 0 && vramSize != 0;
    if (!registersComplete && !videoMemoryComplete) {
        return;
    }
    const int result = vekMemOpen(regStart, regSize, vramStart, vramSize);
    if (result < 0) {
        endForFailedOpen("/dev/mem", progName);
    }
    options->openResult = result;
}

void doParseSerialOpen(StartOptions* options, const char* progName, const char* text)
{
    constexpr char kDeviceFolder[] = "/dev/";
    char path[sizeof kDeviceFolder + kLongestSerialName] = "";
    const std::size_t nameLength = strnlen(text, kLongestSerialName);
    const auto* const comma = static_cast<const char*>(memchr(text, ',', nameLength));
    const std::size_t kept = comma == nullptr ? nameLength : static_cast<std::size_t>(comma - text);
    memcpy(stpcpy(path, kDeviceFolder), text, kept);

    const char* const rest = text + kept;
    const int rate = *rest == ',' ? baudRate(rest + 1) : kDefaultBaudRate;
    const int result = vekSerialOpen(path, rate);
    if (result < 0) {
        endForFailedOpen(path, progName);
    }
    options->openResult = result;
}

void doParseHelp(const char* progName)
{
    progHelp(progName);
    exit(EXIT_SUCCESS);
}

void doParseInteractive(StartOptions* options)
{
    options->interactive = 1;
}

void progHelp(const char* progName)
{
    printf("%s usage.\n", progName);
    puts("eg:");
    printf("%s\n\texecute command if /dev/vekrw device exist!\n", progName);
    printf("%s -i enter interactive command line.\n", progName);
    printf("%s --cmd \"xxx xxx\" \n\t The cmdline requires DOUBLE QUOTATION MARKS.\n", progName);
    printf(
        "%s --mem reg_start,reg_size,vram_start,vram_size\n"
        "\tenter command line using /dev/vekrw device (root).\n"
        "\treg_start,reg_size,vram_start,vram_size are all in hex without 0x or space\n",
        progName);
    printf(
        "%s --tty ttyUSB0,9600\n"
        "\tenter command line using /dev/ttyUSB0,9600 device (root).\n"
        "\t baudrate is supported 9600 19200 38400 115200 460800\n"
        "\tall addresses are in AMBA SPACE\n",
        progName);
    printf("%s --card id to open card device.\n", progName);
    printf("%s --gpu type to set device id.\n", progName);
}
