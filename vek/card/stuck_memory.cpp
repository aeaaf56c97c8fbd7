#include "card/stuck_memory.h"

#include "vek.h"

namespace vek
{
namespace
{

constexpr unsigned kByteBits = 8;
constexpr std::uint64_t kByteMask = 0xff;

/// What an item of a memory reads as that holds `value`.
std::uint64_t applied(StuckBits bits, StuckMemory memory, std::uint64_t address, unsigned width, std::uint64_t value)
{
    for (const StuckBit& stuck : bits) {
        if (stuck.memory != memory || stuck.address < address || stuck.address - address >= width) {
            continue;
        }
        const auto shift = static_cast<unsigned>(stuck.address - address) * kByteBits;
        const std::uint64_t byte = stuck.applied(static_cast<std::uint8_t>(value >> shift));
        value = (value & ~(kByteMask << shift)) | byte << shift;
    }
    return value;
}

}  // namespace

ReadResult StuckRegisters::read(std::uint64_t address, unsigned width)
{
    ReadResult item = inner_.read(address, width);
    if (item.result == VEK_OK) {
        item.value = applied(bits_, StuckMemory::kRegisters, base_ + address, width, item.value);
    }
    return item;
}

ReadResult StuckVideoMemory::read(std::uint64_t address, unsigned width)
{
    ReadResult item = inner_.read(address, width);
    if (item.result == VEK_OK) {
        item.value = applied(bits_, StuckMemory::kVideoMemory, address, width, item.value);
    }
    return item;
}

int StuckVideoMemory::readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count)
{
    const int result = inner_.readLongs(address, longs, count);
    for (const StuckBit& stuck : bits_) {
        const std::uint64_t index = (stuck.address - address) / sizeof *longs;
        if (stuck.memory == StuckMemory::kVideoMemory && stuck.address >= address && index < count) {
            // Asked for alone, an item that does not lie wholly inside stays as it is.
            const ReadResult item = read(address + index * sizeof *longs, sizeof *longs);
            longs[index] = item.result == VEK_OK ? static_cast<std::uint32_t>(item.value) : longs[index];
        }
    }
    return result;
}

}  // namespace vek
