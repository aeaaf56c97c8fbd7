#include "drivers/pci_identity.h"

#include <initializer_list>
#include <utility>

#include "drivers/long_read.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr unsigned kHalfShift = 16;
constexpr std::uint32_t kByteMask = 0xff;
constexpr std::uint32_t kHalfMask = 0xffff;

constexpr std::uint64_t kIds = 0x00;
constexpr std::uint64_t kStatus = 0x04;
constexpr std::uint64_t kRevision = 0x08;
constexpr std::uint64_t kSubsystemIds = 0x2c;
constexpr std::uint64_t kCapabilities = 0x34;

/// Finds a capability by its id. Its list may be damaged: each step leads to a multiple of 4 behind the header, and
/// there are not more of these than steps.
int findCapability(AddressSpace& configuration, std::uint32_t id, std::uint64_t& offset)
{
    constexpr std::uint32_t kHasList = 1U << 20;
    constexpr std::uint32_t kPointerMask = 0xfc;
    constexpr std::uint64_t kHeaderEnd = 0x40;
    constexpr int kMostCapabilities = 48;
    constexpr unsigned kNextShift = 8;
    std::uint32_t status = 0;
    std::uint32_t next = 0;
    int result = readLong(configuration, kStatus, status);
    if (result == VEK_OK) {
        result = readLong(configuration, kCapabilities, next);
    }
    if (result != VEK_OK || (status & kHasList) == 0) {
        return result == VEK_OK ? VEK_NOT_AVAILABLE : result;
    }
    for (int step = 0; step < kMostCapabilities; ++step) {
        offset = next & kPointerMask;
        if (offset < kHeaderEnd) {
            break;
        }
        std::uint32_t header = 0;
        result = readLong(configuration, offset, header);
        if (result != VEK_OK || (header & kByteMask) == id) {
            return result;
        }
        next = header >> kNextShift;
    }
    return VEK_NOT_AVAILABLE;
}

}  // namespace

int readPciIdentity(AddressSpace& configuration, PciIdentity& identity)
{
    std::uint32_t ids = 0;
    std::uint32_t revision = 0;
    std::uint32_t subsystem = 0;
    for (const auto& [offset, value] : {std::pair{kIds, &ids}, {kRevision, &revision}, {kSubsystemIds, &subsystem}}) {
        const int result = readLong(configuration, offset, *value);
        if (result != VEK_OK) {
            return result;
        }
    }
    identity = {.vendor = ids & kHalfMask,
                .device = ids >> kHalfShift,
                .revision = revision & kByteMask,
                .subsystemVendor = subsystem & kHalfMask,
                .subsystem = subsystem >> kHalfShift};
    return VEK_OK;
}

int readPcieLink(AddressSpace& configuration, PcieLink& link)
{
    constexpr std::uint32_t kPcieCapability = 0x10;
    constexpr std::uint64_t kLinkCapabilities = 0x0c;
    constexpr std::uint64_t kLinkControlAndStatus = 0x10;
    constexpr std::uint32_t kSpeedMask = 0xf;
    constexpr unsigned kWidthShift = 4;
    constexpr std::uint32_t kWidthMask = 0x3f;
    std::uint64_t capability = 0;
    std::uint32_t most = 0;
    std::uint32_t present = 0;
    int result = findCapability(configuration, kPcieCapability, capability);
    if (result == VEK_OK) {
        result = readLong(configuration, capability + kLinkCapabilities, most);
    }
    if (result == VEK_OK) {
        result = readLong(configuration, capability + kLinkControlAndStatus, present);
    }
    present >>= kHalfShift;
    link = {.width = present >> kWidthShift & kWidthMask,
            .speed = present & kSpeedMask,
            .widestWidth = most >> kWidthShift & kWidthMask,
            .highestSpeed = most & kSpeedMask};
    return result;
}

unsigned tenthsOfGigatransfers(unsigned speed)
{
    switch (speed) {
        case 1:
            return 25;
        case 2:
            return 50;
        case 3:
            return 80;
        case 4:
            return 160;
        case 5:
            return 320;
        default:
            return 0;
    }
}

}  // namespace vek
