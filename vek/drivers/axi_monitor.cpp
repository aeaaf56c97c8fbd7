#include "drivers/axi_monitor.h"

#include <algorithm>

#include "vek.h"

namespace vek
{
namespace
{

using namespace axi_monitor;

/// Reads registers one after the other and keeps the first failure.
class Reader
{
public:
    explicit Reader(AddressSpace& registers) : registers_(registers) {}

    std::uint64_t read(std::uint64_t address, unsigned width)
    {
        const auto [result, value] = registers_.read(address, width);
        if (result_ == VEK_OK) {
            result_ = result;
        }
        return value;
    }

    int result() const { return result_; }

private:
    AddressSpace& registers_;
    int result_ = VEK_OK;
};

AxiCounts readMaster(Reader& reader, std::size_t master)
{
    const std::uint64_t base = kFirstMaster + kMasterStep * master;
    return {
        .unit = decodeUnit(static_cast<std::uint32_t>(reader.read(base + kUnit, kRegisterWidth))),
        .reads = reader.read(base + kReads, kCounterWidth),
        .writes = reader.read(base + kWrites, kCounterWidth),
        .bytes = reader.read(base + kBytes, kCounterWidth),
        .latencyCycles = reader.read(base + kLatency, kCounterWidth),
    };
}

}  // namespace

int takeAxiSample(AddressSpace& registers, AxiSample& sample)
{
    const int latched = registers.write(kLatch, kRegisterWidth, 1);
    if (latched != VEK_OK) {
        return latched;
    }
    Reader reader(registers);
    sample.counting = (reader.read(kControl, kRegisterWidth) & kCounts) != 0;
    sample.sequence = reader.read(kSequence, kCounterWidth);
    sample.cycles = reader.read(kCycles, kCounterWidth);
    sample.masters = std::min<std::uint64_t>(reader.read(kMasters, kRegisterWidth), kMaxMasters);
    for (std::size_t master = 0; master < sample.masters; ++master) {
        sample.counts[master] = readMaster(reader, master);
    }
    return reader.result();
}

}  // namespace vek
