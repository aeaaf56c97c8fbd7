#include <gtest/gtest.h>

#include <cstdint>
#include <set>

#include "open_card.h"
#include "vek.h"

namespace
{

constexpr uint32_t kAllBits = 0xffffffff;

uint32_t readConfig(int32_t offset)
{
    uint32_t value = 0;
    EXPECT_EQ(vekPciRead(offset, &value), 0) << std::hex << offset;
    return value;
}

/** What a write of `value` leaves at `offset`, which then gets its former value back. */
uint32_t afterWrite(int32_t offset, uint32_t value)
{
    const uint32_t former = readConfig(offset);
    EXPECT_EQ(vekPciWrite(offset, value), 0);
    const uint32_t left = readConfig(offset);
    EXPECT_EQ(vekPciWrite(offset, former), 0);
    return left;
}

/** The size that a 32-bit base address register decodes, found as an operating system does. */
uint32_t sizeOfBar(int32_t offset, uint32_t flagBits)
{
    return ~(afterWrite(offset, kAllBits) & ~flagBits) + 1;
}

/** The offset of a capability of the classic list, 0 when it is not there. */
int32_t findCapability(uint8_t id)
{
    std::set<int32_t> seen;
    auto at = static_cast<int32_t>(readConfig(0x34) & 0xfc);
    while (at != 0 && seen.insert(at).second) {
        const uint32_t header = readConfig(at);
        if ((header & 0xff) == id) {
            return at;
        }
        at = static_cast<int32_t>((header >> 8) & 0xfc);
    }
    return 0;
}

class PciConfiguration : public EitherCard
{
};
INSTANTIATE_TEST_SUITE_P(Cards, PciConfiguration, testing::Values(0, 1));

TEST_P(PciConfiguration, NamesADisplayController)
{
    const uint32_t id = readConfig(0x00);
    EXPECT_EQ(id >> 16, GetParam() == 0 ? 0x0201U : 0x0202U);
    EXPECT_NE(id & 0xffff, 0U);
    EXPECT_NE(id & 0xffff, 0xffffU);
    EXPECT_EQ(readConfig(0x08) >> 8, 0x030000U) << "VGA-compatible display controller";
    EXPECT_EQ((readConfig(0x0c) >> 16) & 0xff, 0U) << "type 0 header, one function";
    EXPECT_EQ(readConfig(0x2c) & 0xffff, id & 0xffff);
    EXPECT_NE(readConfig(0x2c) >> 16, 0U);
    EXPECT_EQ((readConfig(0x3c) >> 8) & 0xff, 1U) << "INTA#";
    for (const int32_t readOnly : {0x00, 0x08, 0x2c, 0x34}) {
        EXPECT_EQ(afterWrite(readOnly, ~readConfig(readOnly)), readConfig(readOnly)) << std::hex << readOnly;
    }
    EXPECT_EQ(afterWrite(0x3c, 0xffffff05), (readConfig(0x3c) & 0xffffff00) | 0x05) << "only the line is writable";
    EXPECT_EQ(afterWrite(0x0c, 0xffffff40), (readConfig(0x0c) & 0xffffff00) | 0x40);
}

TEST_P(PciConfiguration, TakesOnlyTheImplementedCommandBits)
{
    EXPECT_EQ(afterWrite(0x04, 0x0000ffff) & 0xffff, 0x0547U);
    EXPECT_EQ(afterWrite(0x04, 0) & 0xffff, 0U);
    EXPECT_EQ(afterWrite(0x04, 0x00100007), 0x00100007U);
}

TEST_P(PciConfiguration, KeepsTheCapabilityBitOfTheStatus)
{
    EXPECT_EQ(afterWrite(0x04, 0xffff0000) >> 16, 0x0010U);
    EXPECT_EQ(readConfig(0x04) >> 16, 0x0010U);
}

TEST_P(PciConfiguration, AnswersTheSizingOfItsBars)
{
    EXPECT_EQ(readConfig(0x10) & 0xf, 0x0U) << "32-bit memory, not prefetchable";
    EXPECT_NE(readConfig(0x10), 0U);
    EXPECT_EQ(sizeOfBar(0x10, 0xf), 16U << 20);
    EXPECT_EQ(readConfig(0x18) & 0xf, 0xcU) << "64-bit memory, prefetchable";
    EXPECT_EQ(sizeOfBar(0x18, 0xf), 256U << 20);
    EXPECT_EQ(afterWrite(0x18, kAllBits), 0xf000000cU);
    EXPECT_EQ(afterWrite(0x1c, kAllBits), kAllBits);
    EXPECT_EQ(afterWrite(0x1c, 0x12), 0x12U);
    for (const int32_t unused : {0x14, 0x20, 0x24, 0x28}) {
        EXPECT_EQ(readConfig(unused), 0U);
        EXPECT_EQ(afterWrite(unused, kAllBits), 0U);
    }
    EXPECT_EQ(readConfig(0x30) & 1, 0U) << "the expansion ROM is off";
    EXPECT_EQ(afterWrite(0x30, kAllBits), 0xfffe0001U) << "128 KiB and its enable bit";
    EXPECT_EQ(afterWrite(0x30, 0xfffff800), 0xfffe0000U);
    EXPECT_EQ(afterWrite(0x10, 0xd0000000), 0xd0000000U);
}

TEST_P(PciConfiguration, SwitchesPowerStatesThatItHas)
{
    const int32_t capability = findCapability(0x01);
    ASSERT_NE(capability, 0);
    EXPECT_EQ((readConfig(capability) >> 16) & 0x7, 3U) << "version of the interface";
    EXPECT_EQ((readConfig(capability) >> 25) & 0x3, 0U) << "neither D1 nor D2";
    const int32_t control = capability + 4;
    const uint32_t others = readConfig(control) & ~3U;
    EXPECT_EQ(readConfig(control) & 3, 0U);
    for (const uint32_t absent : {1U, 2U}) {
        EXPECT_EQ(vekPciWrite(control, others | absent), 0);
        EXPECT_EQ(readConfig(control) & 3, 0U) << absent;
    }
    EXPECT_EQ(vekPciWrite(control, others | 3), 0);
    EXPECT_EQ(readConfig(control), others | 3);
    EXPECT_EQ(vekPciWrite(control, others | 2), 0);
    EXPECT_EQ(readConfig(control) & 3, 3U) << "an unsupported state leaves the present one";
    EXPECT_EQ(vekPciWrite(control, others | 0x102), 0);
    EXPECT_EQ(readConfig(control), others | 0x103) << "the rest of that write takes effect";
    EXPECT_EQ(vekPciWrite(control, others), 0);
    EXPECT_EQ(readConfig(control), others);
    EXPECT_EQ(afterWrite(control, kAllBits), 0x10bU) << "No_Soft_Reset, PME_En, D3hot; no PME_Status to set";
}

TEST_P(PciConfiguration, HasMessageSignalledInterrupts)
{
    const int32_t capability = findCapability(0x05);
    ASSERT_NE(capability, 0);
    const uint32_t header = readConfig(capability);
    EXPECT_EQ((header >> 23) & 1, 1U) << "64-bit addresses";
    EXPECT_EQ((header >> 16) & 1, 0U) << "switched off";
    EXPECT_EQ(afterWrite(capability, kAllBits), header | 0x00710000);
    EXPECT_EQ(afterWrite(capability + 4, kAllBits), 0xfffffffcU);
    EXPECT_EQ(afterWrite(capability + 8, kAllBits), kAllBits);
    EXPECT_EQ(afterWrite(capability + 12, kAllBits), 0x0000ffffU);
}

TEST_P(PciConfiguration, IsAPciExpressEndpoint)
{
    const int32_t capability = findCapability(0x10);
    ASSERT_NE(capability, 0);
    EXPECT_EQ((readConfig(capability) >> 8) & 0xff, 0U) << "the last of the list";
    EXPECT_EQ((readConfig(capability) >> 16) & 0xff, 0x02U) << "version 2, endpoint";
    const uint32_t linkCapabilities = readConfig(capability + 0x0c);
    EXPECT_EQ(linkCapabilities & 0xf, 3U) << "8 GT/s";
    EXPECT_EQ((linkCapabilities >> 4) & 0x3f, GetParam() == 0 ? 16U : 8U);
    EXPECT_EQ((readConfig(capability + 0x2c) >> 1) & 0x7f, 0x7U) << "2.5, 5 and 8 GT/s";
    EXPECT_EQ((readConfig(capability + 0x10) >> 16) & 0x3ff, linkCapabilities & 0x3ff) << "the link runs at its best";
    for (const int32_t readOnly : {0x00, 0x04, 0x0c, 0x24, 0x2c}) {
        EXPECT_EQ(afterWrite(capability + readOnly, ~readConfig(capability + readOnly)),
                  readConfig(capability + readOnly))
            << std::hex << readOnly;
    }
    const uint32_t link = readConfig(capability + 0x10);
    EXPECT_EQ(afterWrite(capability + 0x10, kAllBits), (link & 0xffff0000) | 0x00cb);
    EXPECT_EQ(afterWrite(capability + 0x10, 0), link & 0xffff0000) << "the link status is read-only";
    EXPECT_EQ(afterWrite(capability + 0x28, kAllBits), 0x1fU);
    EXPECT_EQ(afterWrite(capability + 0x30, 0x0000ffff) & 0xffff, 0xffbfU);
}

TEST_P(PciConfiguration, ClearsDeviceStatusBitsByWritingOnes)
{
    const int32_t control = findCapability(0x10) + 0x08;
    const uint32_t settings = readConfig(control) & 0xffff;
    // Enumeration leaves an unsupported request and the correctable error that goes with it.
    EXPECT_EQ(readConfig(control) >> 16, 0x0009U);
    EXPECT_EQ(vekPciWrite(control, settings), 0);
    EXPECT_EQ(readConfig(control) >> 16, 0x0009U) << "zeros leave the bits";
    EXPECT_EQ(vekPciWrite(control, 0x00080000 | settings), 0);
    EXPECT_EQ(readConfig(control), 0x00010000 | settings);
    EXPECT_EQ(vekPciWrite(control, 0xffff0000 | settings), 0);
    EXPECT_EQ(readConfig(control), settings) << "ones clear and never set";
    EXPECT_EQ(vekPciWrite(control, 0x0000ffff), 0);
    EXPECT_EQ(readConfig(control), 0x79ffU);
    EXPECT_EQ(vekPciWrite(control, settings), 0);
}

TEST_P(PciConfiguration, ReportsErrorsInItsExtendedSpace)
{
    EXPECT_EQ(readConfig(0x100), 0x00020001U) << "Advanced Error Reporting, version 2, the last of the list";
    EXPECT_EQ(readConfig(0x104), 0x00100000U) << "the unsupported request of the enumeration";
    EXPECT_EQ(vekPciWrite(0x104, 0x00010000), 0);
    EXPECT_EQ(readConfig(0x104), 0x00100000U);
    EXPECT_EQ(vekPciWrite(0x104, kAllBits), 0);
    EXPECT_EQ(readConfig(0x104), 0U);
    EXPECT_EQ(afterWrite(0x108, kAllBits), 0x001ff010U);
    EXPECT_EQ(readConfig(0x10c), 0x00062010U) << "the severities of the standard";
    EXPECT_EQ(afterWrite(0x10c, 0), 0U);
    EXPECT_EQ(vekPciWrite(0x110, kAllBits), 0);
    EXPECT_EQ(readConfig(0x110), 0U);
    EXPECT_EQ(readConfig(0x114), 0x00002000U) << "advisory errors are masked";
    EXPECT_EQ(afterWrite(0x114, kAllBits), 0x000031c1U);
    EXPECT_EQ(afterWrite(0x118, kAllBits) & 0x1e0, 0x1e0U);
    EXPECT_EQ(afterWrite(0x11c, kAllBits), readConfig(0x11c));
}

TEST_P(PciConfiguration, ReadsZeroWhereNothingIsImplemented)
{
    for (const int32_t offset : {0x38, 0xb0, 0xfc, 0x12c, 0x800, 0xffc}) {
        EXPECT_EQ(readConfig(offset), 0U) << std::hex << offset;
        EXPECT_EQ(afterWrite(offset, kAllBits), 0U) << std::hex << offset;
    }
}

TEST_P(PciConfiguration, RefusesOffsetsThatAreNone)
{
    for (const int32_t offset : {1, 2, 3, 0x41, 0xffd, 0x1000, 0x1004, 0x7ffffffc, -4, -1, -0x7fffffff - 1}) {
        uint32_t value = 0;
        EXPECT_EQ(vekPciRead(offset, &value), VEK_BAD_ARGUMENT) << offset;
        EXPECT_EQ(value, kAllBits) << offset;
        EXPECT_EQ(vekPciWrite(offset, 0), VEK_BAD_ARGUMENT) << offset;
    }
    EXPECT_EQ(vekPciRead(0, nullptr), VEK_BAD_ARGUMENT);
}

}  // namespace
