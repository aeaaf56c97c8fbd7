#include "card/register_region.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <vector>

#include "vek.h"

namespace
{

using vek::AddressSpace;
using vek::AddressWindow;
using vek::kRegisterRegionSize;
using vek::ReadResult;
using vek::RegisterRegion;

// Notes every access; reads as 0x50 plus the address in every byte.
class NotingDevice final : public AddressSpace
{
public:
    using Access = std::tuple<char, std::uint64_t, unsigned, std::uint64_t>;

    ReadResult read(std::uint64_t address, unsigned width) override
    {
        accesses.emplace_back('r', address, width, 0);
        std::uint64_t value = 0;
        for (unsigned i = width; i-- > 0;) {
            value = value << 8 | (0x50 + address + i);
        }
        return {VEK_OK, value};
    }

    int write(std::uint64_t address, unsigned width, std::uint64_t value) override
    {
        accesses.emplace_back('w', address, width, value);
        return VEK_OK;
    }

    std::vector<Access> accesses;
};

class RegisterRegionWindows : public ::testing::Test
{
protected:
    static constexpr std::uint64_t kFirst = 0x1000;
    static constexpr std::uint64_t kSecond = 0x9008;

    // What the fast path of the exported functions does.
    std::uint64_t readLong(std::uint64_t address)
    {
        if (region.plainMemory().holds(address)) {
            std::uint32_t item = 0;
            std::memcpy(&item, region.plainMemory().at(address), sizeof item);
            return item;
        }
        return region.read(address, 4).value;
    }

    NotingDevice first;
    NotingDevice second;
    const std::array<AddressWindow, 2> windows{{{kFirst, 0x10, &first}, {kSecond, 8, &second}}};
    RegisterRegion region{windows};
};

TEST_F(RegisterRegionWindows, ADeviceGetsTheAccessWithItsOwnOffsetAndWidth)
{
    EXPECT_EQ(region.read(kFirst + 4, 4).value, 0x57565554U);
    EXPECT_EQ(region.write(kFirst + 8, 8, 0x1122334455667788U), VEK_OK);
    EXPECT_EQ(region.read(kSecond, 1).value, 0x50U);
    EXPECT_EQ(first.accesses, (std::vector<NotingDevice::Access>{{'r', 4, 4, 0}, {'w', 8, 8, 0x1122334455667788U}}));
    EXPECT_EQ(second.accesses, (std::vector<NotingDevice::Access>{{'r', 0, 1, 0}}));
}

TEST_F(RegisterRegionWindows, StorageLiesAroundTheDevices)
{
    for (const std::uint64_t address : {kFirst - 4, kFirst + 0x10, kSecond - 4, kSecond + 8, kRegisterRegionSize - 4}) {
        EXPECT_EQ(region.write(address, 4, address), VEK_OK);
        EXPECT_EQ(region.read(address, 4).value, address);
    }
    EXPECT_TRUE(first.accesses.empty());
    EXPECT_TRUE(second.accesses.empty());
}

TEST_F(RegisterRegionWindows, AnItemAcrossABorderIsTakenApart)
{
    EXPECT_EQ(region.write(kFirst - 2, 4, 0xddccbbaaU), VEK_OK);
    EXPECT_EQ(first.accesses, (std::vector<NotingDevice::Access>{{'w', 0, 1, 0xcc}, {'w', 1, 1, 0xdd}}));
    EXPECT_EQ(region.read(kFirst - 2, 2).value, 0xbbaaU);
    EXPECT_EQ(region.read(kFirst - 2, 4).value, 0x5150bbaaU);
    EXPECT_EQ(region.write(kSecond + 6, 4, 0x44332211U), VEK_OK);
    EXPECT_EQ(region.read(kSecond + 8, 2).value, 0x4433U);
}

TEST_F(RegisterRegionWindows, TheFastPathNeverReachesOverADevice)
{
    ASSERT_EQ(region.write(0, 4, 1), VEK_OK);
    for (std::uint64_t address = 0; address < 0xa000; ++address) {
        region.read(address, 1);
        for (const AddressWindow& window : windows) {
            for (std::uint64_t near = window.base - 7; near < window.end(); ++near) {
                ASSERT_FALSE(region.plainMemory().holds(near)) << "after " << address << " at " << near;
            }
        }
    }
}

TEST_F(RegisterRegionWindows, TheFastPathServesEveryStretchOfStorage)
{
    ASSERT_EQ(region.write(0, 4, 1), VEK_OK);
    for (const std::uint64_t address : {std::uint64_t{0}, kFirst + 0x10, kSecond + 8}) {
        region.read(address, 4);
        EXPECT_TRUE(region.plainMemory().holds(address));
        EXPECT_TRUE(region.plainMemory().holds(address + 0x100));
    }
    EXPECT_TRUE(region.plainMemory().holds(kRegisterRegionSize - 8));
    EXPECT_FALSE(region.plainMemory().holds(kRegisterRegionSize - 7));
}

TEST_F(RegisterRegionWindows, FastAndSlowPathSeeTheSameStorage)
{
    for (std::uint64_t address = 0; address < 0xa000; address += 4) {
        if (!windows[0].touches(address, 4) && !windows[1].touches(address, 4)) {
            ASSERT_EQ(region.write(address, 4, ~address), VEK_OK);
            ASSERT_EQ(readLong(address), static_cast<std::uint32_t>(~address));
        }
    }
}

TEST_F(RegisterRegionWindows, NothingAnswersBeyondTheEnd)
{
    for (const std::uint64_t address : {kRegisterRegionSize - 3, kRegisterRegionSize, ~std::uint64_t{0}}) {
        EXPECT_EQ(region.read(address, 4).result, VEK_NO_RESPONSE);
        EXPECT_EQ(region.write(address, 4, 1), VEK_NO_RESPONSE);
    }
}

}  // namespace
