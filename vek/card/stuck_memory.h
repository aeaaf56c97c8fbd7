#ifndef VEK_CARD_STUCK_MEMORY_H
#define VEK_CARD_STUCK_MEMORY_H

#include <cstddef>
#include <cstdint>

#include "address_space.h"
#include "card/stuck_bit.h"

namespace vek
{

/// Registers as they are seen with bits stuck in them. `inner` answers first; `base` is its place in the register
/// region, by whose addresses the bits go. It never exposes plain memory. Both have to live as long as this.
class StuckRegisters final : public AddressSpace
{
public:
    StuckRegisters(AddressSpace& inner, std::uint64_t base, StuckBits bits) : inner_(inner), base_(base), bits_(bits) {}

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override
    {
        return inner_.write(address, width, value);
    }

private:
    AddressSpace& inner_;
    std::uint64_t base_;
    StuckBits bits_;
};

/// Video memory as it is seen with bits stuck in it; otherwise like StuckRegisters.
class StuckVideoMemory final : public BlockSpace
{
public:
    StuckVideoMemory(BlockSpace& inner, StuckBits bits) : inner_(inner), bits_(bits) {}

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override
    {
        return inner_.write(address, width, value);
    }
    int readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count) override;
    int writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count) override
    {
        return inner_.writeLongs(address, longs, count);
    }
    int fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count) override
    {
        return inner_.fillLongs(address, value, count);
    }

private:
    BlockSpace& inner_;
    StuckBits bits_;
};

}  // namespace vek

#endif
