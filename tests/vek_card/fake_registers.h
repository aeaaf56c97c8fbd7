#ifndef TESTS_VEK_CARD_FAKE_REGISTERS_H
#define TESTS_VEK_CARD_FAKE_REGISTERS_H

#include <cstdint>
#include <map>
#include <set>

#include "address_space.h"

/// A register file of longs that holds what a test puts there. It fails where it is told to and knows what was written.
class FakeRegisters final : public vek::AddressSpace
{
public:
    vek::ReadResult read(std::uint64_t address, unsigned width) override
    {
        if (width != 4) {
            return vek::kUnanswered;
        }
        if (failing.contains(address)) {
            return {VEK_IO_ERROR, 0};
        }
        return {VEK_OK, longs[address]};
    }

    int write(std::uint64_t address, unsigned width, std::uint64_t value) override
    {
        if (width != 4) {
            return VEK_NO_RESPONSE;
        }
        if (failing.contains(address)) {
            return VEK_IO_ERROR;
        }
        longs[address] = static_cast<std::uint32_t>(value);
        ++writes;
        return VEK_OK;
    }

    std::map<std::uint64_t, std::uint32_t> longs;
    std::set<std::uint64_t> failing;
    int writes = 0;
};

#endif
