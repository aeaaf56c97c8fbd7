#include "drivers/info_unit.h"

#include <initializer_list>
#include <utility>

#include "drivers/long_read.h"
#include "vek.h"

namespace vek
{
namespace
{

using namespace info_unit;

GopMarks gopMarks(std::uint32_t version, std::uint32_t mode)
{
    constexpr std::uint32_t kByte = 0xff;
    constexpr std::uint32_t kHalf = 0xffff;
    return {.started = (version & kGopStarted) != 0,
            .major = version >> kGopMajorShift & kByte,
            .minor = version & kByte,
            .width = mode & kHalf,
            .height = mode >> kGopHeightShift};
}

int readCores(AddressSpace& registers, ChipInformation& information)
{
    information.coreCount = 0;
    for (CoreLoad& core : information.cores) {
        const std::uint64_t address = kCores + kCoreStep * information.coreCount;
        std::uint32_t unit = 0;
        int result = readLong(registers, address, unit);
        if (result == VEK_OK) {
            result = readLong(registers, address + kLoad, core.permille);
        }
        if (result != VEK_OK || unit == 0) {
            return result;
        }
        core.core = decodeUnit(unit);
        ++information.coreCount;
    }
    return VEK_OK;
}

}  // namespace

int readChipInformation(AddressSpace& registers, ChipInformation& information)
{
    std::uint32_t gopVersion = 0;
    std::uint32_t gopMode = 0;
    for (const auto& [address, value] : {std::pair{kMemoryBus, &information.memoryBusBits},
                                         {kMemorySize, &information.memoryMebibytes},
                                         {kGopVersion, &gopVersion},
                                         {kGopMode, &gopMode}}) {
        const int result = readLong(registers, address, *value);
        if (result != VEK_OK) {
            return result;
        }
    }
    information.gop = gopMarks(gopVersion, gopMode);
    return readCores(registers, information);
}

}  // namespace vek
