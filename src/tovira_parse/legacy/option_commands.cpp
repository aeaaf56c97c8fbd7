#include "tovira_parse/legacy/option_commands.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "tovira_parse/heap.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/text.h"
#include "vek.h"

namespace
{

constexpr const char* kProgramName = "tovira_util_tool";

// The operations that -o tells.
constexpr std::int32_t kRead = 0;
constexpr std::int32_t kWrite = 1;

constexpr std::int32_t kBytesPerLine = 16;

void printUsage()
{
    optHelp(kProgramName);
}

// The words that options are taken from. The subcommand stands in the place of a program name: the options follow it at
// once, wherever getopt is told to end at the first word that is none.
struct Words {
    int argc;
    char** argv;

    // The letter of the next option, -1 at their end; its value is in optarg.
    int nextOption(const char* letters) const { return getopt(argc - 1, argv + 1, letters); }

    // Lets getopt begin with these words, whatever it has read before.
    void beginOptions() const { optind = 0; }
};

// The functions of a memory for one item width. The item is widened to 64 bits on this side.
struct ItemAccess {
    std::uint64_t (*read)(std::uint64_t address);
    std::uint64_t (*write)(std::uint64_t address, std::uint64_t value);  ///< what is left of the value is returned
};

template <typename Item, int (*Read)(std::uint64_t, Item*), int (*Write)(std::uint64_t, Item)>
constexpr ItemAccess kItem = {
    .read =
        [](std::uint64_t address) {
            Item value = 0;
            Read(address, &value);
            return std::uint64_t{value};
        },
    .write =
        [](std::uint64_t address, std::uint64_t value) {
            const auto item = static_cast<Item>(value);
            Write(address, item);
            return std::uint64_t{item};
        },
};

// A memory that items of 1, 2, 4 and 8 bytes are read from and written to.
struct Memory {
    const char* name;  ///< as it begins an error
    ItemAccess bytes;
    ItemAccess words;
    ItemAccess longs;
    ItemAccess quads;

    const ItemAccess* itemOf(std::int32_t width) const
    {
        switch (width) {
            case 1:
                return &bytes;
            case 2:
                return &words;
            case 4:
                return &longs;
            case 8:
                return &quads;
            default:
                return nullptr;
        }
    }
};

constexpr Memory kRegisters = {
    .name = "Register",
    .bytes = kItem<std::uint8_t, vekRegReadByte, vekRegWriteByte>,
    .words = kItem<std::uint16_t, vekRegReadWord, vekRegWriteWord>,
    .longs = kItem<std::uint32_t, vekRegReadLong, vekRegWriteLong>,
    .quads = kItem<std::uint64_t, vekRegReadQuad, vekRegWriteQuad>,
};
constexpr Memory kVideoMemory = {
    .name = "Vram",
    .bytes = kItem<std::uint8_t, vekVramReadByte, vekVramWriteByte>,
    .words = kItem<std::uint16_t, vekVramReadWord, vekVramWriteWord>,
    .longs = kItem<std::uint32_t, vekVramReadLong, vekVramWriteLong>,
    .quads = kItem<std::uint64_t, vekVramReadQuad, vekVramWriteQuad>,
};

struct MemoryOperation {
    std::uint32_t address = 0;
    std::int32_t operation = kRead;
    std::int32_t width = 1;
    std::uint64_t value = 0;
    std::int32_t count = 1;
};

MemoryOperation takeMemoryOperation(const Words& words)
{
    MemoryOperation taken;
    words.beginOptions();
    for (int letter = 0; (letter = words.nextOption("a:o:w:v:n:")) != -1;) {
        switch (letter) {
            case 'a':
                taken.address = static_cast<std::uint32_t>(htoi(optarg));
                break;
            case 'o':
                taken.operation = decimal32(optarg);
                break;
            case 'w':
                taken.width = decimal32(optarg);
                break;
            case 'v':
                taken.value = static_cast<std::uint64_t>(htoi(optarg));
                break;
            case 'n':
                taken.count = htoi32(optarg);
                break;
            default:
                break;
        }
    }
    return taken;
}

// A quad is printed as two longs, the low one first.
void printItem(std::uint64_t item, std::int32_t width)
{
    constexpr int kLongBits = 32;
    constexpr std::int32_t kLongWidth = 4;
    constexpr int kDigitsPerByte = 2;
    const auto low = static_cast<std::uint32_t>(item);
    if (width <= kLongWidth) {
        printf("%0*x", kDigitsPerByte * width, low);
    } else {
        printf("%08x %08x", low, static_cast<std::uint32_t>(item >> kLongBits));
    }
}

void writeItem(const ItemAccess& item, const MemoryOperation& operation)
{
    const std::uint64_t written = item.write(operation.address, operation.value);
    printf("[%08x]=", operation.address);
    printItem(written, operation.width);
    putchar('\n');
}

void dumpItems(const ItemAccess& item, const MemoryOperation& operation)
{
    const std::int32_t itemsPerLine = kBytesPerLine / operation.width;
    for (std::int32_t i = 0; i < operation.count; ++i) {
        const std::uint32_t address =
            operation.address + static_cast<std::uint32_t>(i) * static_cast<std::uint32_t>(operation.width);
        if (i % itemsPerLine == 0) {
            printf("%s%08x:", i == 0 ? "" : "\n", address);
        }
        const std::uint64_t value = item.read(address);
        putchar(' ');
        printItem(value, operation.width);
    }
    putchar('\n');
}

void runMemory(const Words& words, const Memory& memory)
{
    const MemoryOperation operation = takeMemoryOperation(words);
    const ItemAccess* const item = memory.itemOf(operation.width);
    if (operation.operation != kRead && operation.operation != kWrite) {
        printf("%s operation type is error\n", memory.name);
        printUsage();
    } else if (item == nullptr) {
        puts("Register operation width is error");
        printUsage();
    } else if (operation.operation == kWrite) {
        writeItem(*item, operation);
    } else {
        dumpItems(*item, operation);
    }
}

struct I2cOperation {
    std::int32_t channel = 0;
    std::uint32_t device = 0;
    std::uint32_t subAddress = 0;
    std::int32_t operation = kRead;
    std::uint8_t value = 0;
    std::int32_t count = 1;
};

I2cOperation takeI2cOperation(const Words& words)
{
    I2cOperation taken;
    words.beginOptions();
    for (int letter = 0; (letter = words.nextOption("c:d:a:o:v:n:")) != -1;) {
        if (letter == '?') {
            continue;
        }
        const std::int32_t number = htoi32(optarg);
        switch (letter) {
            case 'c':
                taken.channel = number;
                break;
            case 'd':
                taken.device = static_cast<std::uint32_t>(number);
                break;
            case 'a':
                taken.subAddress = static_cast<std::uint32_t>(number);
                break;
            case 'o':
                taken.operation = number;
                break;
            case 'v':
                taken.value = static_cast<std::uint8_t>(number);
                break;
            default:
                taken.count = number;
                break;
        }
    }
    return taken;
}

bool succeeded(int result)
{
    if (result != 0) {
        printf("I2C error: %s\n", textOrUnknown(vekI2cErrString(result)));
    }
    return result == 0;
}

void readI2c(const I2cOperation& operation)
{
    const HeapPointer<std::uint8_t> bytes = allocateBytes(static_cast<std::size_t>(std::max(operation.count, 1)));
    if (bytes == nullptr) {
        return;
    }
    if (!succeeded(
            vekI2cRead(operation.channel, operation.device, operation.subAddress, operation.count, bytes.get()))) {
        return;
    }
    for (std::int32_t i = 0; i < operation.count; ++i) {
        if (i % kBytesPerLine == 0) {
            printf("%s%04x:", i == 0 ? "" : "\n", operation.subAddress + static_cast<std::uint32_t>(i));
        }
        printf(" %02x", bytes.get()[i]);
    }
    putchar('\n');
}

void runI2c(const Words& words)
{
    const I2cOperation operation = takeI2cOperation(words);
    if (operation.operation == kRead) {
        readI2c(operation);
    } else if (operation.operation == kWrite) {
        succeeded(vekI2cWrite(operation.channel, operation.device, operation.subAddress, 1, &operation.value));
    } else {
        puts("I2c operation type is error");
        printUsage();
    }
}

struct ZoomVideoOperation {
    std::int32_t channel = 0;
    std::int32_t i2cChannel = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t cutLeft = 0;
    std::int32_t crtc = 0;
    std::int32_t enable = 1;
};

ZoomVideoOperation takeZoomVideoOperation(const Words& words)
{
    ZoomVideoOperation taken;
    words.beginOptions();
    for (int letter = 0; (letter = words.nextOption("c:i:x:y:w:h:l:t:e:")) != -1;) {
        if (letter == '?') {
            continue;
        }
        const std::int32_t number = decimal32(optarg);
        switch (letter) {
            case 'c':
                taken.channel = number;
                break;
            case 'i':
                taken.i2cChannel = number;
                break;
            case 'x':
                taken.x = number;
                break;
            case 'y':
                taken.y = number;
                break;
            case 'w':
                taken.width = number;
                break;
            case 'h':
                taken.height = number;
                break;
            case 'l':
                taken.cutLeft = number;
                break;
            case 't':
                taken.crtc = number;
                break;
            default:
                taken.enable = number;
                break;
        }
    }
    return taken;
}

void runZoomVideo(const Words& words)
{
    const ZoomVideoOperation operation = takeZoomVideoOperation(words);
    if (operation.enable == 0) {
        vekZoomVideoStop(operation.channel);
        return;
    }
    vekZoomVideoInit(operation.channel, operation.i2cChannel, 0, 0);
    vekZoomVideoStart(operation.channel, operation.x, operation.y, operation.width, operation.height, operation.cutLeft,
                      0, 0, operation.crtc);
}

void runScript(const Words& words)
{
    constexpr int kScriptWord = 2;
    if (words.argc <= kScriptWord) {
        printUsage();
    } else {
        vekRunScript(words.argv[kScriptWord]);
    }
}

void showVersion()
{
    int major = 0;
    int minor = 0;
    int third = 0;
    int fourth = 0;
    if (vekRvtcoreVer(&major, &minor, &third, &fourth) == 0) {
        printf("%d.%d.%d.%d\n", major, minor, third, fourth);
    }
}

bool isVersionWord(std::string_view word)
{
    return word == "ver" || word == "VER" || word == "version" || word == "VERSION";
}

void printMemoryUsage(const char* programName, const char* memory, const char* address)
{
    printf("%s %s -a %s -o 1 -w 0 -v 12345678 -n 1\n", programName, memory, address);
    puts("\t-a: register address in hex");
    puts("\t-o: operation type, 0 for read, 1 for write, default: 0");
    puts("\t-w: operation width, 1 for a byte, 2 for two byte, 4 for four bytes, 8 for 8 bytes, default: 1");
    puts("\t-v: operation value for write in hex");
    puts("\t-n: read count in hex, only used in operation read, default: 1");
}

}  // namespace

void parseArg(int argc, char** argv)
{
    if (argc < 2) {
        return;
    }
    const Words words{.argc = argc, .argv = argv};
    const std::string_view subCommand = argv[1];
    if (subCommand == "reg") {
        runMemory(words, kRegisters);
    } else if (subCommand == "vram") {
        runMemory(words, kVideoMemory);
    } else if (subCommand == "i2c") {
        runI2c(words);
    } else if (subCommand == "zv") {
        runZoomVideo(words);
    } else if (subCommand == "run") {
        runScript(words);
    } else if (isVersionWord(subCommand)) {
        showVersion();
    } else {
        printUsage();
    }
}

void optHelp(const char* programName)
{
    printf("%s usage.\n", programName);
    puts("eg:");
    printf("%s\n\tenter command line\n", programName);
    printMemoryUsage(programName, "reg", "10028");
    printMemoryUsage(programName, "vram", "0");
    printf("%s i2c -c 1 -d 24 -a 0 -o 0 -v 12 -n 1\n", programName);
    puts("\t-c: i2c channel, 0 or 1");
    puts("\t-d: i2c device address in hex");
    puts("\t-a: i2c device subaddress in hex, default: 0");
    puts("\t-o: operation type, 0 for read, 1 for write, default: 0");
    puts("\t-v: operation value for byte write in hex");
    puts("\t-c: read count in hex, only used in operation read, default: 1");
    printf("%s zv -c 1 -i 1 -x 0 -y 0 -w 720 -h 572 -l 8 -t 0 -e 1\n", programName);
    puts("\t-c: zoom video controller channel, 0 or 1, default: 0");
    puts("\t-i: i2c channel for zoom video, 0 or 1, default: 0");
    puts("\t-x -y: video position for zoom video, default: x = 0, y = 0");
    puts("\t-w -h: video size for zoom video, default: real camera image size");
    puts("\t-l: left cut pixels for video image");
    puts("\t-t: composite to crtc selection, 0 to CRTC 0, 1 to CRTC 1, default: 0");
    puts("\t-e: enable for zoom video controller. 0: disable; 1: enable. default 0");
    printf("%s ver\n", programName);
    puts("\treturn rvtcore version");
}
