#include "card/feature_registers.h"

#include "card/long_registers.h"
#include "drivers/feature_switches.h"
#include "vek.h"

namespace vek
{

using namespace feature_switches;

ReadResult FeatureRegisters::read(std::uint64_t address, unsigned width)
{
    if (!answersLong(address, width, kWindowSize)) {
        return kUnanswered;
    }
    switch (address) {
        case kFunctions:
            return {VEK_OK, functions_};
        case kMultiGpu:
            return {VEK_OK, multiGpu_};
        default:
            return {VEK_OK, 0};
    }
}

int FeatureRegisters::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!answersLong(address, width, kWindowSize)) {
        return VEK_NO_RESPONSE;
    }
    const auto written = static_cast<std::uint32_t>(value);
    if (address == kFunctions) {
        functions_ = written & kFunctionsMask;
    } else if (address == kMultiGpu) {
        multiGpu_ = written & kMultiGpuMask;
    }
    return VEK_OK;
}

}  // namespace vek
