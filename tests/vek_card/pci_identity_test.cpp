#include "drivers/pci_identity.h"

#include <gtest/gtest.h>

#include "card/chip_facts.h"
#include "card/pci_configuration.h"
#include "fake_registers.h"
#include "vek.h"

namespace
{

TEST(PciIdentities, ComeFromTheHeader)
{
    vek::PciConfiguration configuration(vek::kQz202);
    vek::PciIdentity identity{};
    ASSERT_EQ(vek::readPciIdentity(configuration, identity), VEK_OK);
    EXPECT_EQ(identity.vendor, 0x6e5aU);
    EXPECT_EQ(identity.device, 0x202U);
    EXPECT_EQ(identity.revision, 0x00U);
    EXPECT_EQ(identity.subsystemVendor, 0x6e5aU);
    EXPECT_EQ(identity.subsystem, 0x2020U);
}

TEST(PcieLinks, ComeFromTheCapability)
{
    vek::PciConfiguration configuration(vek::kQz202);
    vek::PcieLink link{};
    ASSERT_EQ(vek::readPcieLink(configuration, link), VEK_OK);
    EXPECT_EQ(link.width, 8U);
    EXPECT_EQ(link.speed, 3U);
    EXPECT_EQ(link.widestWidth, 8U);
    EXPECT_EQ(link.highestSpeed, 3U);
}

/// A function with a PCI Express capability at 0x60 behind another one at 0x40.
FakeRegisters pciFunction()
{
    FakeRegisters configuration;
    configuration.longs = {{0x04, 1U << 20}, {0x34, 0x40},         {0x40, 0x6001},
                           {0x60, 0x0010},   {0x6c, 16U << 4 | 4}, {0x70, (4U << 4 | 2U) << 16}};
    return configuration;
}

TEST(PcieLinks, TellWhatIsNegotiatedApartFromWhatIsPossible)
{
    FakeRegisters configuration = pciFunction();
    vek::PcieLink link{};
    ASSERT_EQ(vek::readPcieLink(configuration, link), VEK_OK);
    EXPECT_EQ(link.width, 4U);
    EXPECT_EQ(link.speed, 2U);
    EXPECT_EQ(link.widestWidth, 16U);
    EXPECT_EQ(link.highestSpeed, 4U);
}

TEST(PcieLinks, AreMissingWhereTheCapabilityIs)
{
    vek::PcieLink link{};
    FakeRegisters configuration = pciFunction();
    configuration.longs[0x04] = 0;
    EXPECT_EQ(vek::readPcieLink(configuration, link), VEK_NOT_AVAILABLE) << "there is no list";
    configuration = pciFunction();
    configuration.longs[0x40] = 0x4001;
    EXPECT_EQ(vek::readPcieLink(configuration, link), VEK_NOT_AVAILABLE) << "the list goes round in circles";
    for (const std::uint32_t next : {0x00U, 0x04U, 0x3cU}) {
        configuration.longs[0x40] = next << 8 | 1;
        EXPECT_EQ(vek::readPcieLink(configuration, link), VEK_NOT_AVAILABLE) << next;
    }
}

TEST(PcieLinks, TellAFailureOfAnyRegister)
{
    vek::PcieLink link{};
    vek::PciIdentity identity{};
    FakeRegisters configuration = pciFunction();
    for (const std::uint64_t offset : {0x04, 0x34, 0x40, 0x60, 0x6c, 0x70}) {
        configuration.failing = {offset};
        EXPECT_EQ(vek::readPcieLink(configuration, link), VEK_IO_ERROR) << offset;
    }
    for (const std::uint64_t offset : {0x00, 0x08, 0x2c}) {
        configuration.failing = {offset};
        EXPECT_EQ(vek::readPciIdentity(configuration, identity), VEK_IO_ERROR) << offset;
    }
}

TEST(PcieLinks, HaveKnownSpeeds)
{
    EXPECT_EQ(vek::tenthsOfGigatransfers(1), 25U);
    EXPECT_EQ(vek::tenthsOfGigatransfers(2), 50U);
    EXPECT_EQ(vek::tenthsOfGigatransfers(3), 80U);
    EXPECT_EQ(vek::tenthsOfGigatransfers(4), 160U);
    EXPECT_EQ(vek::tenthsOfGigatransfers(5), 320U);
    EXPECT_EQ(vek::tenthsOfGigatransfers(0), 0U);
    EXPECT_EQ(vek::tenthsOfGigatransfers(6), 0U);
}

}  // namespace
