#include "card/info_unit.h"

#include "card/long_registers.h"
#include "card/workload.h"
#include "vek.h"

namespace vek
{

using namespace info_unit;

std::uint32_t InfoUnit::loadOf(const UnitId& core) const
{
    constexpr std::uint64_t kPermille = 1000;
    const DomainHertz hertz = clocks_.hertz();
    const std::uint64_t all = hertz[workOf(core.kind).clock];
    return all == 0 ? 0 : static_cast<std::uint32_t>(busyHertz(core, hertz) * kPermille / all);
}

/// A register of the cores, by its place behind the first one.
std::uint32_t InfoUnit::coreRegister(std::uint64_t offset) const
{
    const std::uint64_t core = offset / kCoreStep;
    if (core >= coreCount_) {
        return 0;
    }
    return offset % kCoreStep == kLoad ? loadOf(cores_[core]) : encodeUnit(cores_[core]);
}

ReadResult InfoUnit::read(std::uint64_t address, unsigned width)
{
    if (!answersLong(address, width, kWindowSize)) {
        return kUnanswered;
    }
    if (address >= kCores) {
        return {VEK_OK, coreRegister(address - kCores)};
    }
    switch (address) {
        case kMemoryBus:
            return {VEK_OK, memoryBusBits_};
        case kMemorySize:
            return {VEK_OK, memoryMebibytes_};
        case kGopVersion:
            return {VEK_OK, gopVersion_};
        case kGopMode:
            return {VEK_OK, gopMode_};
        default:
            return {VEK_OK, 0};
    }
}

int InfoUnit::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!answersLong(address, width, kWindowSize)) {
        return VEK_NO_RESPONSE;
    }
    const auto written = static_cast<std::uint32_t>(value);
    if (address == kGopVersion) {
        gopVersion_ = written;
    } else if (address == kGopMode) {
        gopMode_ = written;
    }
    return VEK_OK;
}

}  // namespace vek
