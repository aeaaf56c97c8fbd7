#include "card/amba_bus.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "card/sparse_memory.h"
#include "vek.h"

namespace
{

using vek::AmbaBus;
using vek::SparseMemory;

// A memory that a window shows a part of, one that fills its window, and one that is shorter than its window.
class AmbaBusWindows : public ::testing::Test
{
protected:
    static constexpr std::uint64_t kPart = 0x1000;
    static constexpr std::uint64_t kWhole = 0x8000;
    static constexpr std::uint64_t kShort = 0x10000;
    static constexpr std::uint64_t kSize = 0x100;
    static constexpr std::uint64_t kItem = 0x1122334455667788U;

    bool exposes(std::uint64_t address) const { return bus.plainMemory().holds(address); }

    SparseMemory large{0x1000};
    SparseMemory whole{kSize};
    SparseMemory little{0x10};
    AmbaBus bus{{{{kPart, kSize, &large}, {kWhole, kSize, &whole}, {kShort, kSize, &little}}}};
};

TEST_F(AmbaBusWindows, AnItemGoesToTheTargetByTheTargetsAddress)
{
    ASSERT_EQ(bus.write(kWhole + 8, 8, kItem), VEK_OK);
    EXPECT_EQ(whole.read(8, 8).value, kItem);
    EXPECT_EQ(bus.read(kWhole + 8, 8).value, kItem);
}

TEST_F(AmbaBusWindows, AnItemThatNoWindowHoldsGetsNoResponse)
{
    for (const std::uint64_t address : {kPart - 1, kPart + kSize - 7, kPart + kSize, kShort + kSize, vek::kAllOnes}) {
        EXPECT_EQ(bus.read(address, 8).result, VEK_NO_RESPONSE) << address;
        EXPECT_EQ(bus.read(address, 8).value, vek::kAllOnes) << address;
        EXPECT_EQ(bus.write(address, 8, 0), VEK_NO_RESPONSE) << address;
    }
}

TEST_F(AmbaBusWindows, ExposesTheMemoryBehindTheWindowThatWasUsedLast)
{
    EXPECT_FALSE(exposes(kWhole));
    ASSERT_EQ(bus.write(kWhole, 8, kItem), VEK_OK);
    ASSERT_TRUE(exposes(kWhole));
    EXPECT_EQ(std::memcmp(bus.plainMemory().at(kWhole), &kItem, sizeof kItem), 0);
    EXPECT_TRUE(exposes(kWhole + kSize - 8));
    EXPECT_FALSE(exposes(kWhole + kSize - 7));
    EXPECT_FALSE(exposes(kWhole - 1));
    EXPECT_FALSE(exposes(kPart));

    ASSERT_EQ(bus.write(kPart + 8, 8, kItem), VEK_OK);
    EXPECT_FALSE(exposes(kWhole));
    ASSERT_TRUE(exposes(kPart + 8));
    EXPECT_EQ(std::memcmp(bus.plainMemory().at(kPart + 8), &kItem, sizeof kItem), 0);
}

TEST_F(AmbaBusWindows, ExposesNoMoreThanTheWindowAndNoMoreThanTheMemory)
{
    ASSERT_EQ(bus.write(kPart, 1, 1), VEK_OK);
    EXPECT_TRUE(exposes(kPart + kSize - 8));
    EXPECT_FALSE(exposes(kPart + kSize - 7));

    ASSERT_EQ(bus.write(kShort, 1, 1), VEK_OK);
    EXPECT_TRUE(exposes(kShort + 8));
    EXPECT_FALSE(exposes(kShort + 9));
}

TEST_F(AmbaBusWindows, ExposesNothingBehindAWindowThatHasAnotherTarget)
{
    ASSERT_EQ(bus.write(kWhole, 8, kItem), VEK_OK);
    SparseMemory other{kSize};
    bus.setTarget(1, &other);
    EXPECT_FALSE(exposes(kWhole));
    EXPECT_EQ(bus.read(kWhole, 8).value, 0U);
}

}  // namespace
