#include "drivers/card_report.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstddef>
#include <cstdint>

#include "drivers/clocks.h"
#include "drivers/info_unit.h"
#include "drivers/output_routing.h"
#include "drivers/pci_identity.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr std::uint64_t kMebibyte = 0x10'0000;
constexpr unsigned kTenths = 10;

enum class Item : std::uint8_t {
    kId,
    kCard,
    kGop,
    kAxi,
    kVpu,
    k3d,
    k2d,
    kDdr,
    k3dCore,
    k2dCore,
    kVram,
    kBandwidth,
    kLoad,
    kChannel
};

/// By Item; in place, so that the table needs no relocation.
using Keyword = std::array<char, 10>;
constexpr std::array<Keyword, 14> kKeywords{{{"ID"},
                                             {"CARD"},
                                             {"GOP"},
                                             {"AXI"},
                                             {"VPU"},
                                             {"3D"},
                                             {"2D"},
                                             {"DDR"},
                                             {"3DCORE"},
                                             {"2DCORE"},
                                             {"VRAM"},
                                             {"BANDWIDTH"},
                                             {"LOAD"},
                                             {"CHANNEL"}}};

int printId(std::FILE* out, AddressSpace& configuration)
{
    PciIdentity identity{};
    const int result = readPciIdentity(configuration, identity);
    if (result == VEK_OK) {
        std::fprintf(out, "id: vendor 0x%04x, device 0x%04x, revision 0x%02x, subsystem 0x%04x 0x%04x\n",
                     identity.vendor, identity.device, identity.revision, identity.subsystemVendor, identity.subsystem);
    }
    return result;
}

int printClock(std::FILE* out, AddressSpace& clocks, const char* name, VekClockDomain domain)
{
    Rate rate = kNoClock;
    const int result = ClockDriver(clocks).readRate(domain, rate);
    if (result != VEK_OK) {
        return result;
    }
    if (rate.khz == 0) {
        std::fprintf(out, "%s: off\n", name);
    } else {
        std::fprintf(out, "%s: %" PRIu64 " MHz\n", name, rate.megahertz());
    }
    return VEK_OK;
}

int print3dClocks(std::FILE* out, AddressSpace& clocks)
{
    const int result = printClock(out, clocks, "3d", VEK_CLOCK_3D);
    return result == VEK_OK ? printClock(out, clocks, "3d shader", VEK_CLOCK_3D_SHADER) : result;
}

void printGop(std::FILE* out, const GopMarks& gop)
{
    if (gop.started) {
        std::fprintf(out, "gop: version %u.%u, mode %ux%u\n", gop.major, gop.minor, gop.width, gop.height);
    } else {
        std::fputs("gop: not started\n", out);
    }
}

void printCores(std::FILE* out, const ChipInformation& information, ChipUnit kind)
{
    const auto cores = information.byCore();
    const auto count =
        std::count_if(cores.begin(), cores.end(), [=](const CoreLoad& core) { return core.core.kind == kind; });
    std::fprintf(out, "%s cores: %d\n", unitName(kind), static_cast<int>(count));
}

void printLoads(std::FILE* out, const ChipInformation& information)
{
    for (const CoreLoad& core : information.byCore()) {
        std::fprintf(out, "load of %s core %u: %" PRIu32 ".%" PRIu32 "%%\n", unitName(core.core.kind),
                     static_cast<unsigned>(core.core.instance), core.permille / kTenths, core.permille % kTenths);
    }
}

void printMemory(std::FILE* out, const VideoMemory& memory)
{
    constexpr std::uint64_t kPermille = 1000;
    const std::uint64_t total = memory.totalBytes();
    const std::uint64_t used = total - memory.freeBytes();
    const std::uint64_t permille = (used * kPermille + total / 2) / total;
    std::fprintf(out, "vram: %" PRIu64 ".%" PRIu64 "%% used, %" PRIu64 " of %" PRIu64 " MB\n", permille / kTenths,
                 permille % kTenths, (used + kMebibyte - 1) / kMebibyte, total / kMebibyte);
}

/// The bandwidths of the two ways to video memory: of the chip and of the host.
int printBandwidth(std::FILE* out, const ReportSources& card, const ChipInformation& information)
{
    constexpr std::uint64_t kTransfersPerClock = 2;
    constexpr std::uint64_t kBitsPerByte = 8;
    constexpr std::uint64_t kMegabytesPerTenth = 100;
    Rate rate = kNoClock;
    PcieLink link{};
    int result = ClockDriver(card.clocks).readRate(VEK_CLOCK_DDR, rate);
    if (result == VEK_OK) {
        result = readPcieLink(card.pciConfiguration, link);
    }
    if (result != VEK_OK) {
        return result;
    }
    const std::uint64_t megabytes = rate.megahertz() * kTransfersPerClock * information.memoryBusBits / kBitsPerByte;
    const std::uint64_t tenths = (megabytes + kMegabytesPerTenth / 2) / kMegabytesPerTenth;
    std::fprintf(out, "bandwidth: %" PRIu64 ".%" PRIu64 " GB/s, DDR at %" PRIu64 " MHz over %" PRIu32 " bits\n",
                 tenths / kTenths, tenths % kTenths, rate.megahertz(), information.memoryBusBits);
    const unsigned speed = tenthsOfGigatransfers(link.speed);
    const unsigned highest = tenthsOfGigatransfers(link.highestSpeed);
    std::fprintf(out, "pcie link: x%u of x%u at %u.%u of %u.%u GT/s\n", link.width, link.widestWidth, speed / kTenths,
                 speed % kTenths, highest / kTenths, highest % kTenths);
    return VEK_OK;
}

void printOutput(std::FILE* out, const Displays& displays, DisplayOutput output, const OutputRoute& route)
{
    std::fprintf(out, "%s: ", outputName(output));
    const int ddc = ddcChannelOf(displays.units, output);
    if (ddc != kNoDdc) {
        std::fprintf(out, "DDC %d, ", ddc);
    } else {
        std::fputs("AUX, ", out);
    }
    if (route.on) {
        std::fprintf(out, "CRTC-%u, ", route.controller);
    } else {
        std::fputs("off, ", out);
    }
    VekDisplayMode mode{};
    switch (attachedTiming(displays, output, mode)) {
        case VEK_OK:
            std::fprintf(out, "display of %dx%d\n", mode.hdisplay, mode.vdisplay);
            break;
        case VEK_NO_RESPONSE:
            std::fputs("no display\n", out);
            break;
        case VEK_BAD_DATA:
            std::fputs("display with a damaged EDID\n", out);
            break;
        default:
            std::fputs("display not known\n", out);
            break;
    }
}

int printChannels(std::FILE* out, const ReportSources& card)
{
    std::uint32_t routing = 0;
    const int result = readRouting(card.displays.registers, routing);
    if (result != VEK_OK) {
        return result;
    }
    std::fprintf(out, "channels: %u I2C, %u CRTC\n", card.i2cChannels,
                 static_cast<unsigned>(card.displays.units.controllers));
    for (std::size_t number = 0; number < kDisplayOutputs; ++number) {
        const auto output = static_cast<DisplayOutput>(number);
        if (hasOutput(card.displays.units, output)) {
            printOutput(out, card.displays, output, routeOf(routing, output));
        }
    }
    return VEK_OK;
}

int printItem(std::FILE* out, const ReportSources& card, const ChipInformation& information, Item item)
{
    switch (item) {
        case Item::kId:
            return printId(out, card.pciConfiguration);
        case Item::kAxi:
            return printClock(out, card.clocks, "axi", VEK_CLOCK_AXI);
        case Item::kVpu:
            return printClock(out, card.clocks, "vpu", VEK_CLOCK_VPU);
        case Item::k3d:
            return print3dClocks(out, card.clocks);
        case Item::k2d:
            return printClock(out, card.clocks, "2d", VEK_CLOCK_2D);
        case Item::kDdr:
            return printClock(out, card.clocks, "ddr", VEK_CLOCK_DDR);
        case Item::kBandwidth:
            return printBandwidth(out, card, information);
        case Item::kChannel:
            return printChannels(out, card);
        case Item::kCard:
            std::fprintf(out, "cards: %u\n", card.cards);
            break;
        case Item::kGop:
            printGop(out, information.gop);
            break;
        case Item::k3dCore:
            printCores(out, information, ChipUnit::k3d);
            break;
        case Item::k2dCore:
            printCores(out, information, ChipUnit::k2d);
            break;
        case Item::kVram:
            printMemory(out, card.memory);
            break;
        case Item::kLoad:
            printLoads(out, information);
            break;
    }
    return VEK_OK;
}

}  // namespace

int printCardReport(std::FILE* out, const ReportSources& card, std::string_view keyword)
{
    const auto isNamed = [=](const Keyword& candidate) { return keyword == candidate.data(); };
    if (!keyword.empty() && std::none_of(kKeywords.begin(), kKeywords.end(), isNamed)) {
        return VEK_BAD_ARGUMENT;
    }
    ChipInformation information{};
    int result = readChipInformation(card.information, information);
    for (std::size_t item = 0; result == VEK_OK && item < kKeywords.size(); ++item) {
        if (keyword.empty() || isNamed(kKeywords[item])) {
            result = printItem(out, card, information, static_cast<Item>(item));
        }
    }
    return result;
}

}  // namespace vek
