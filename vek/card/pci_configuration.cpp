#include "card/pci_configuration.h"

#include <algorithm>

#include "vek.h"

namespace vek
{
namespace
{

constexpr std::uint64_t kSize = 4096;
constexpr std::uint16_t kPowerManagementControl = 0x044;

/// What a write leaves in PMCSR's PowerState field: states that the function lacks (D1, D2) are ignored.
std::uint32_t acceptedPowerState(std::uint32_t present, std::uint32_t written)
{
    constexpr std::uint32_t kField = 0x3;
    constexpr std::uint32_t kD0 = 0;
    constexpr std::uint32_t kD3Hot = 3;
    const std::uint32_t state = written & kField;
    return state == kD0 || state == kD3Hot ? written : (written & ~kField) | (present & kField);
}

bool addressable(std::uint64_t offset, unsigned width)
{
    return width == sizeof(std::uint32_t) && offset % sizeof(std::uint32_t) == 0 && offset < kSize;
}

}  // namespace

/// The register at an offset, null where the space is not implemented: it reads 0 there and ignores writes.
PciRegister* PciConfiguration::find(std::uint64_t offset)
{
    PciRegister* found =
        std::lower_bound(registers_.begin(), registers_.end(), offset,
                         [](const PciRegister& candidate, std::uint64_t wanted) { return candidate.offset < wanted; });
    return found != registers_.end() && found->offset == offset ? found : nullptr;
}

ReadResult PciConfiguration::read(std::uint64_t offset, unsigned width)
{
    if (!addressable(offset, width)) {
        return {VEK_BAD_ARGUMENT, 0};
    }
    const PciRegister* target = find(offset);
    return {VEK_OK, target == nullptr ? 0 : target->value};
}

int PciConfiguration::write(std::uint64_t offset, unsigned width, std::uint64_t value)
{
    if (!addressable(offset, width)) {
        return VEK_BAD_ARGUMENT;
    }
    PciRegister* target = find(offset);
    if (target == nullptr) {
        return VEK_OK;
    }
    auto written = static_cast<std::uint32_t>(value);
    if (offset == kPowerManagementControl) {
        written = acceptedPowerState(target->value, written);
    }
    const std::uint32_t kept = target->value & ~target->writable & ~(written & target->writeOneToClear);
    target->value = kept | (written & target->writable);
    return VEK_OK;
}

}  // namespace vek
