#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <numeric>
#include <thread>
#include <vector>

#include "open_card.h"
#include "vek.h"

namespace
{

using testing::Each;

constexpr uint64_t kPage = 0x3ff00;
constexpr uint64_t kSignature = 0x3ff00;
constexpr uint64_t kLength = 0x3ff10;
constexpr uint64_t kCommand = 0x3ff11;
constexpr uint64_t kStatus = 0x3ff12;
constexpr uint64_t kDoorbell = 0x3ff13;
constexpr uint64_t kAddress = 0x3ff14;
constexpr uint64_t kCaught = 0x3ff18;
constexpr uint64_t kCount = 0x3ff19;
constexpr uint64_t kSubAddress = 0x3ff1a;
constexpr uint64_t kCompletion = 0x3ff1c;
constexpr uint64_t kVerdict = 0x3ff21;
constexpr uint64_t kData = 0x3ff80;
constexpr uint64_t kReset = 0x308068;

constexpr uint32_t kRunning = 0xdeadbeef;
constexpr uint32_t kDone = 0x55aa55aa;

constexpr uint8_t kI2cRead = 1;
constexpr uint8_t kAuxWrite = 8;
constexpr uint8_t kAuxRead = 9;

uint8_t byteAt(uint64_t address)
{
    uint8_t value = 0xee;
    EXPECT_EQ(vekRegReadByte(address, &value), VEK_OK);
    return value;
}

uint32_t longAt(uint64_t address)
{
    uint32_t value = 0;
    EXPECT_EQ(vekRegReadLong(address, &value), VEK_OK);
    return value;
}

void setByte(uint64_t address, uint8_t value)
{
    EXPECT_EQ(vekRegWriteByte(address, value), VEK_OK);
}

void setLong(uint64_t address, uint32_t value)
{
    EXPECT_EQ(vekRegWriteLong(address, value), VEK_OK);
}

/** Where byte `index` of a transfer lies. */
uint64_t dataAddress(uint64_t index)
{
    return kPage + (index + 0x80) % 0x100;
}

bool waitFor(uint64_t address, uint32_t value)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (longAt(address) != value) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
    return true;
}

/** What a host does with the mailbox. */
class McuMailbox : public EitherCard
{
protected:
    static void request(uint8_t command, uint32_t address, uint8_t length)
    {
        ASSERT_EQ(longAt(kSignature), kRunning);
        setByte(kCommand, command);
        setLong(kAddress, address);
        setByte(kLength, length);
        setByte(0x3ff20, 0x32);
    }

    static void ring()
    {
        setByte(kDoorbell, 0xaa);
        ASSERT_TRUE(waitFor(kCompletion, kDone));
    }

    static void release() { setLong(kCompletion, 0); }

    static std::vector<uint8_t> data(size_t count)
    {
        std::vector<uint8_t> bytes;
        for (size_t index = 0; index < count; ++index) {
            bytes.push_back(byteAt(dataAddress(index)));
        }
        return bytes;
    }

    static std::vector<uint8_t> edid()
    {
        std::vector<uint8_t> bytes(256);
        EXPECT_EQ(vekDpI2cReadBuf(0, 0x50, 0, bytes.data(), 256), VEK_OK);
        return bytes;
    }
};
INSTANTIATE_TEST_SUITE_P(Cards, McuMailbox, testing::Values(0, 1));

TEST_P(McuMailbox, ShowsThatItsFirmwareRuns)
{
    EXPECT_EQ(longAt(kSignature), kRunning);
    EXPECT_EQ(byteAt(kSignature), 0xef);
    EXPECT_EQ(longAt(kCompletion), 0U);
    EXPECT_EQ(longAt(kReset), 0xffffff08);
}

TEST_P(McuMailbox, ReadsADpcdByte)
{
    request(kAuxRead, 0x001, 0);
    setByte(kCount, 1);
    ring();
    uint8_t expected = 0;
    ASSERT_EQ(vekDpAuxRead(0, 0x001, &expected), VEK_OK);
    EXPECT_EQ(byteAt(kData), expected);
    release();
    EXPECT_EQ(byteAt(kStatus), 0);
    EXPECT_EQ(longAt(kCompletion), 0U);
}

TEST_P(McuMailbox, ReadsRunsOfDpcdBytes)
{
    for (const int count : {1, 16, 17, 100, 128}) {
        request(kAuxRead, 0x000, static_cast<uint8_t>(count - 1));
        setByte(kCount, static_cast<uint8_t>(count));
        ring();
        EXPECT_EQ(byteAt(kStatus), 0);
        EXPECT_EQ(byteAt(kCaught), count);
        std::vector<uint8_t> expected(static_cast<size_t>(count));
        ASSERT_EQ(vekDpAuxReadBuf(0, 0, expected.data(), count), VEK_OK);
        EXPECT_EQ(data(expected.size()), expected);
        release();
    }
}

TEST_P(McuMailbox, WritesDpcdBytes)
{
    request(kAuxWrite, 0x300, 0);
    setByte(kData, 0x3c);
    ring();
    EXPECT_EQ(byteAt(kStatus), 0);
    EXPECT_EQ(byteAt(kData), 0x3c);
    release();
    request(kAuxWrite, 0x301, 1);
    setByte(kCount, 2);
    setByte(kData, 0x11);
    setByte(kData + 1, 0x22);
    ring();
    EXPECT_EQ(byteAt(kStatus), 0);
    release();
    std::vector<uint8_t> written(3);
    ASSERT_EQ(vekDpAuxReadBuf(0, 0x300, written.data(), 3), VEK_OK);
    EXPECT_EQ(written, (std::vector<uint8_t>{0x3c, 0x11, 0x22}));
}

TEST_P(McuMailbox, SaysWhenNothingCame)
{
    const struct {
        uint8_t command;
        uint32_t address;
        uint8_t status;
    } requests[] = {{kAuxRead, 0x100000, 0x08},   {kAuxRead, 0xffffffff, 0x08}, {kAuxWrite, 0x000, 0x08},
                    {kAuxWrite, 0x100000, 0x08},  {kI2cRead, 0x51, 0x10},       {kI2cRead, 0xa0, 0x10},
                    {kI2cRead, 0xffffffff, 0x10}, {0x77, 0x000, 0x08}};
    for (const auto& [command, address, status] : requests) {
        request(command, address, 0);
        setByte(kCount, 1);
        setByte(kData, 0x99);
        ring();
        EXPECT_EQ(byteAt(kStatus), status) << int{command} << " at " << address;
        EXPECT_EQ(byteAt(kCaught), 0);
        EXPECT_EQ(byteAt(kData), 0x99);
    }
    // Although the last request was not released, the next one is answered anew.
    request(kAuxRead, 0x200, 0);
    setByte(kCount, 1);
    ring();
    EXPECT_EQ(byteAt(kStatus), 0);
    EXPECT_EQ(byteAt(kData), 1);
    release();
}

TEST_P(McuMailbox, ReadsEdidBlocks)
{
    const std::vector<uint8_t> expected = edid();
    for (const uint8_t subAddress : {uint8_t{0x00}, uint8_t{0x80}}) {
        request(kI2cRead, 0x50, 0);
        setByte(kCount, 0x80);
        setByte(kSubAddress, subAddress);
        ring();
        EXPECT_EQ(byteAt(kStatus), 0);
        EXPECT_TRUE(std::equal(expected.begin() + subAddress, expected.begin() + subAddress + 128, data(128).begin()));
        EXPECT_NE(byteAt(kVerdict), 0);
        release();
    }
}

TEST_P(McuMailbox, ShowsLongDataBetweenCompletionAndRelease)
{
    const std::vector<uint8_t> expected = edid();
    for (const size_t count : {129U, 255U}) {
        request(kI2cRead, 0x50, 0);
        setByte(kCount, static_cast<uint8_t>(count));
        setByte(kSubAddress, 0);
        ring();
        EXPECT_EQ(byteAt(kStatus), 0);
        EXPECT_EQ(byteAt(kVerdict), 1);
        const std::vector<uint8_t> read = data(count);
        for (uint64_t index = 0; index < count; ++index) {
            const uint64_t address = dataAddress(index);
            const bool taken = address == kStatus || address == kCaught || address == kVerdict ||
                               (address >= kCompletion && address < kCompletion + 4);
            EXPECT_TRUE(taken || read[index] == expected[index]) << index;
        }
        release();
        EXPECT_EQ(longAt(kSignature), kRunning);
    }
}

TEST_P(McuMailbox, DoesNotVouchForPartsOfBlocks)
{
    const struct {
        uint8_t subAddress;
        uint8_t count;
    } reads[] = {{0, 1}, {0, 127}, {0x80, 127}, {1, 128}};
    for (const auto& [subAddress, count] : reads) {
        request(kI2cRead, 0x50, 0);
        setByte(kCount, count);
        setByte(kSubAddress, subAddress);
        ring();
        EXPECT_EQ(byteAt(kStatus), 0);
        EXPECT_EQ(byteAt(kVerdict), 0) << int{subAddress} << " " << int{count};
        release();
    }
}

TEST_P(McuMailbox, RestartsWithAPulseOfItsReset)
{
    setLong(kReset, 0xffffff00);
    EXPECT_EQ(longAt(kSignature), 0U);
    // While it is held nothing answers.
    setByte(kCommand, kAuxRead);
    setByte(kCount, 1);
    setByte(kDoorbell, 0xaa);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(longAt(kCompletion), 0U);
    EXPECT_EQ(longAt(kSignature), 0U);
    setLong(kReset, 0xffffff08);
    EXPECT_TRUE(waitFor(kSignature, kRunning));
    EXPECT_EQ(longAt(kReset), 0xffffff08);
    request(kAuxRead, 0x200, 0);
    setByte(kCount, 1);
    ring();
    EXPECT_EQ(byteAt(kData), 1);
    release();
}

TEST_P(McuMailbox, LeavesTheStorageAroundItAlone)
{
    for (const uint64_t address : {kPage - 4, kPage + 0x100, kReset - 4, kReset + 4, kReset + 8}) {
        setLong(address, 0x12345678);
        EXPECT_EQ(longAt(address), 0x12345678U);
    }
    EXPECT_EQ(longAt(kSignature), kRunning);
    EXPECT_EQ(longAt(kReset), 0xffffff08);
}

TEST_P(McuMailbox, IsRamApartFromItsProtocol)
{
    setLong(kPage + 0x40, 0xcafef00d);
    EXPECT_EQ(longAt(kPage + 0x40), 0xcafef00dU);
    EXPECT_EQ(byteAt(kPage + 0x41), 0xf0);
    uint64_t quad = 0;
    EXPECT_EQ(vekRegWriteQuad(kPage + 0x48, 0x1122334455667788), VEK_OK);
    EXPECT_EQ(vekRegReadQuad(kPage + 0x48, &quad), VEK_OK);
    EXPECT_EQ(quad, 0x1122334455667788U);
}

}  // namespace
