#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "open_card.h"
#include "vek.h"

namespace
{

using testing::Each;
using testing::ElementsAre;

constexpr uint32_t kEeprom = 0x50;
constexpr uint32_t kDecoder = 0x24;
constexpr uint32_t kLtc2990 = 0x4c;
constexpr uint32_t kLtc2991 = 0x48;
constexpr uint32_t kIna3221 = 0x40;
constexpr uint32_t kPage = 8;

/** Reads the EEPROM of the open card. */
std::vector<uint8_t> readEeprom(uint32_t subAddress, int count)
{
    std::vector<uint8_t> bytes(static_cast<std::size_t>(count), 0xee);
    EXPECT_EQ(vekI2cRead(0, kEeprom, subAddress, count, bytes.data()), VEK_OK);
    return bytes;
}

void writeEeprom(uint32_t subAddress, const std::vector<uint8_t>& bytes)
{
    EXPECT_EQ(vekI2cWrite(0, kEeprom, subAddress, static_cast<int>(bytes.size()), bytes.data()), VEK_OK);
}

class I2c : public EitherCard
{
};
INSTANTIATE_TEST_SUITE_P(Cards, I2c, testing::Values(0, 1));

TEST_P(I2c, FindsTheBoardRecord)
{
    const std::vector<uint8_t> record = readEeprom(0, 0x30);
    EXPECT_EQ(std::string(record.begin(), record.begin() + 4), "BRD1");
    EXPECT_EQ(record[4] | record[5] << 8, GetParam() == 0 ? VEK_DEVICE_QZ201 : VEK_DEVICE_QZ202);
    EXPECT_EQ(record[7], GetParam() == 0 ? 4 : 2);
    EXPECT_EQ(std::string(record.begin() + 8, record.begin() + 13), GetParam() == 0 ? "TV201" : "TV202");
    EXPECT_EQ(std::accumulate(record.begin(), record.end(), 0) % 256, 0);
}

TEST_P(I2c, HasNothingElseOnItsChannels)
{
    for (int channel = 0; channel < 4; ++channel) {
        for (uint32_t device = 0; device < 0x80; ++device) {
            const bool decoder = (channel == 0 && device == kDecoder) || (channel == 1 && device == kDecoder + 1);
            const bool monitor =
                (channel == 1 && (device == kLtc2990 || device == kLtc2991)) || (channel == 2 && device == kIna3221);
            if (decoder || monitor || (channel == 0 && device == kEeprom)) {
                continue;
            }
            uint8_t byte = 0xee;
            EXPECT_EQ(vekI2cRead(channel, device, 0, 1, &byte), VEK_NO_RESPONSE) << channel << " " << device;
            EXPECT_EQ(byte, 0xee);
            EXPECT_EQ(vekI2cWrite(channel, device, 0, 1, &byte), VEK_NO_RESPONSE) << channel << " " << device;
        }
    }
}

TEST_P(I2c, HasFourChannels)
{
    for (const int channel : {-0x7fffffff - 1, -1, 4, 0x7fffffff}) {
        uint8_t byte = 0xee;
        EXPECT_EQ(vekI2cRead(channel, kEeprom, 0, 1, &byte), VEK_NO_BUS);
        EXPECT_EQ(vekI2cWrite(channel, kEeprom, 0, 1, &byte), VEK_NO_BUS);
        EXPECT_EQ(byte, 0xee);
    }
}

TEST_P(I2c, RefusesBadArguments)
{
    uint8_t byte = 0xee;
    EXPECT_EQ(vekI2cRead(0, 0x80, 0, 1, &byte), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekI2cRead(0, 0x100 + kEeprom, 0, 1, &byte), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekI2cRead(0, kEeprom, 0x10000, 1, &byte), VEK_BAD_ARGUMENT);
    for (const int count : {-0x7fffffff - 1, -1, 0x10001, 0x7fffffff}) {
        EXPECT_EQ(vekI2cRead(0, kEeprom, 0, count, &byte), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekI2cWrite(0, kEeprom, 0, count, &byte), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(vekI2cRead(0, kEeprom, 0, 1, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekI2cWrite(0, kEeprom, 0, 1, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(byte, 0xee);
}

TEST_P(I2c, TakesNoBytesWithoutABuffer)
{
    EXPECT_EQ(vekI2cRead(0, kEeprom, 0x12, 0, nullptr), VEK_OK);
    EXPECT_EQ(vekI2cWrite(0, kEeprom, 0x12, 0, nullptr), VEK_OK);
    EXPECT_EQ(vekI2cRead(0, kEeprom + 1, 0x12, 0, nullptr), VEK_NO_RESPONSE);
}

TEST_P(I2c, KeepsWhatIsWritten)
{
    writeEeprom(0x80, {1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_THAT(readEeprom(0x80, 8), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_THAT(readEeprom(0x83, 1), ElementsAre(4));
    // A write cycle follows a write at once: the next transfer waits for its end.
    for (uint8_t value = 0; value < 32; ++value) {
        writeEeprom(0x88U + value, {value});
    }
    std::vector<uint8_t> expected(32);
    std::iota(expected.begin(), expected.end(), uint8_t{0});
    EXPECT_EQ(readEeprom(0x88, 32), expected);
}

TEST_P(I2c, WrapsAWriteInsideItsPage)
{
    writeEeprom(0xa0, std::vector<uint8_t>(3 * kPage, 0));
    writeEeprom(0xa8, std::vector<uint8_t>(kPage, 0xbb));
    writeEeprom(0xa0, std::vector<uint8_t>(kPage, 0xaa));
    writeEeprom(0xa6, {1, 2, 3, 4});
    EXPECT_THAT(readEeprom(0xa0, 9), ElementsAre(3, 4, 0xaa, 0xaa, 0xaa, 0xaa, 1, 2, 0xbb));
    // The last of the bytes for one place counts.
    writeEeprom(0xa0, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_THAT(readEeprom(0xa0, 9), ElementsAre(8, 9, 2, 3, 4, 5, 6, 7, 0xbb));
}

TEST_P(I2c, ReadsOnOverTheEnd)
{
    writeEeprom(0xfe, {0x11, 0x22});
    EXPECT_THAT(readEeprom(0xfe, 4), ElementsAre(0x11, 0x22, 'B', 'R'));
    const std::vector<uint8_t> twice = readEeprom(0, 512);
    EXPECT_TRUE(std::equal(twice.begin(), twice.begin() + 256, twice.begin() + 256));
}

TEST_P(I2c, TakesTheSecondByteOfALongSubAddressForData)
{
    // The counter is one byte: 0x02a8 is place 2, and the byte 0xa8 for it, dropped by the repeated start.
    const std::vector<uint8_t> before = readEeprom(0, 8);
    EXPECT_EQ(readEeprom(0x02a8, 1).front(), before[3]);
    EXPECT_EQ(readEeprom(0, 8), before);
    writeEeprom(0xb000 | 0x55, {0x66});
    EXPECT_THAT(readEeprom(0xb0, 2), ElementsAre(0x55, 0x66));
}

TEST(I2cCards, HaveAnEepromEach)
{
    ASSERT_GE(vekRwOpen(0), 0);
    writeEeprom(0xf0, {0x01});
    ASSERT_GE(vekRwOpen(1), 0);
    writeEeprom(0xf0, {0x02});
    ASSERT_GE(vekRwOpen(0), 0);
    EXPECT_THAT(readEeprom(0xf0, 1), ElementsAre(0x01));
    vekClose();
}

TEST(I2cErrors, HaveATextEach)
{
    std::set<std::string> texts;
    for (const int error :
         std::initializer_list<int>{VEK_OK, VEK_NO_RESPONSE, VEK_NO_ACK_DATA, VEK_NO_BUS, VEK_TIMED_OUT,
                                    VEK_BAD_ARGUMENT, VEK_NO_PATH, VEK_NOT_AVAILABLE, 12345}) {
        EXPECT_TRUE(texts.insert(vekI2cErrString(error)).second) << error;
    }
    for (const int error : {1, -1, -3, 0x7fffffff, -0x7fffffff - 1}) {
        EXPECT_STREQ(vekI2cErrString(error), vekI2cErrString(12345));
    }
}

}  // namespace
