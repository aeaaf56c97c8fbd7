// PCI configuration space of the simulated cards, walked through with the `pci` command alone, as setpci and lspci do.

#include <map>
#include <string>
#include <vector>

#include "finished_program.h"
#include "memory_support.h"

namespace memory_test
{
namespace
{

using ::testing::ElementsAre;

constexpr unsigned kIds = 0x00;
constexpr unsigned kCommandAndStatus = 0x04;
constexpr unsigned kClassAndRevision = 0x08;
constexpr unsigned kHeaderType = 0x0c;
constexpr unsigned kBar0 = 0x10;
constexpr unsigned kBar2 = 0x18;
constexpr unsigned kSubsystem = 0x2c;
constexpr unsigned kExpansionRom = 0x30;
constexpr unsigned kCapabilities = 0x34;
constexpr unsigned kExtendedCapabilities = 0x100;

constexpr std::uint32_t kCapabilityList = 1U << 20;

class PciWalk : public ConsoleTest, public ::testing::WithParamInterface<Card>
{
protected:
    std::uint32_t read(unsigned offset, const std::string& before = "") const
    {
        return readPci(offset, GetParam(), before);
    }

    /** The bits of a base address register that stick when all are written. */
    std::uint32_t addressMask(unsigned offset) const
    {
        const std::string bar = "pci " + hex(offset);
        return read(offset, bar + " ffffffff;");
    }
};

INSTANTIATE_TEST_SUITE_P(Cards, PciWalk, ::testing::Values(Card::kQz201, Card::kQz202),
                         [](const auto& each) { return each.param == Card::kQz201 ? "Qz201" : "Qz202"; });

TEST_P(PciWalk, IdentifiesTheChip)
{
    const std::uint32_t device = GetParam() == Card::kQz201 ? 0x201 : 0x202;
    const std::uint32_t ids = read(kIds);
    EXPECT_EQ(ids >> 16, device);
    EXPECT_NE(ids & 0xffff, 0xffff) << "that stands for no function";
    EXPECT_EQ(read(kSubsystem) & 0xffff, ids & 0xffff);
    EXPECT_EQ(read(kClassAndRevision) >> 8, 0x030000) << "a VGA-compatible display controller";
    EXPECT_EQ((read(kHeaderType) >> 16) & 0x7f, 0) << "a type 0 header";
    EXPECT_EQ(read(kIds, "pci 0 ffffffff;"), ids) << "they cannot be written";
}

TEST_P(PciWalk, PrintsAddressAndDoubleWord)
{
    const std::string ids = GetParam() == Card::kQz201 ? "0201" : "0202";
    EXPECT_EQ(runProgram("pci 0", GetParam()).substr(0, 14), "00000000: " + ids);
    EXPECT_EQ(runProgram("pci 34", GetParam()), "00000034: 00000040\n");
}

// Write all ones, read back, restore: as the system's enumeration finds the size of a region.
TEST_P(PciWalk, SizesTheRegions)
{
    EXPECT_EQ(addressMask(kBar0), 0xff000000) << "16 MiB of registers, 32-bit, not prefetchable";
    const std::uint32_t low = addressMask(kBar2);
    EXPECT_EQ(low & 0xf, 0xc) << "64-bit, prefetchable";
    const std::uint64_t mask = std::uint64_t{addressMask(kBar2 + 4)} << 32 | (low & ~0xfU);
    EXPECT_EQ(~mask + 1, 0x10000000U) << "256 MiB of video memory";
    EXPECT_EQ(addressMask(kExpansionRom), 0xfffe0001) << "128 KiB and its enable bit";
    for (const unsigned unused : {0x14U, 0x20U, 0x24U}) {
        EXPECT_EQ(addressMask(unused), 0U) << unused;
    }
    const std::uint32_t bar = read(kBar0);
    EXPECT_EQ(read(kBar0, "pci 10 ffffffff;pci 10 " + hex(bar) + ";"), bar);
}

TEST_P(PciWalk, SwitchesTheBusMasterOffAndOn)
{
    const std::uint32_t before = read(kCommandAndStatus);
    EXPECT_EQ(before & 0x7, 0x7U);
    EXPECT_EQ(read(kCommandAndStatus, "pci 4 3;") & 0x7, 0x3U);
    EXPECT_EQ(read(kCommandAndStatus, "pci 4 3;pci 4 7;"), before);
}

TEST_P(PciWalk, FollowsTheCapabilityList)
{
    ASSERT_TRUE(read(kCommandAndStatus) & kCapabilityList);
    std::vector<std::uint32_t> ids;
    std::map<std::uint32_t, unsigned> places;
    for (unsigned pointer = read(kCapabilities) & 0xfc; pointer != 0 && ids.size() < 48;) {
        const std::uint32_t header = read(pointer);
        ids.push_back(header & 0xff);
        places[header & 0xff] = pointer;
        pointer = (header >> 8) & 0xfc;
    }
    EXPECT_THAT(ids, ElementsAre(0x01, 0x05, 0x10)) << "power management, MSI, PCI Express";
    const std::uint32_t link = read(places[0x10] + 0x0c);
    EXPECT_EQ((link >> 4) & 0x3f, GetParam() == Card::kQz201 ? 16U : 8U) << "lanes";
    EXPECT_EQ(read(kExtendedCapabilities) & 0xffff, 1U) << "advanced error reporting";
    EXPECT_EQ(read(kExtendedCapabilities) >> 20, 0U) << "the last one";
}

// The last double word of the space answers; behind it nothing does.
TEST_P(PciWalk, ReachesTheEndOfTheSpace)
{
    EXPECT_EQ(runProgram("pci ffc;pci 1000;pci 80000000;pci 1000 5;pci 1000", GetParam()),
              "00000ffc: 00000000\n"
              "00001000: ffffffff\n"
              "ffffffff80000000: ffffffff\n"
              "00001000: ffffffff\n");
}

}  // namespace
}  // namespace memory_test
