#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "open_card.h"
#include "scratch_folder.h"
#include "vek.h"

namespace
{

constexpr uint64_t kGiB = uint64_t{1} << 30;
constexpr uint64_t kSize = 4 * kGiB;

std::string rawBytes(const std::vector<uint32_t>& longs)
{
    std::string bytes(longs.size() * sizeof longs[0], '\0');
    std::memcpy(bytes.data(), longs.data(), bytes.size());
    return bytes;
}

uint32_t longAt(uint64_t address)
{
    uint32_t value = 0;
    EXPECT_EQ(vekVramReadLong(address, &value), 0);
    return value;
}

class BlockTransfer : public FirstCard
{
protected:
    ScratchFolder folder_;
};

TEST_F(BlockTransfer, FillsExactlyTheLongsAskedForAtAnyAlignment)
{
    for (uint64_t start = 0x20000; start < 0x20008; ++start) {
        // More than one of the pieces that a long fill is made in.
        constexpr int kCount = 40000;
        ASSERT_EQ(vekMultVramWriteLong(0, 0x20000 - 8, kCount + 8, nullptr), 0);
        ASSERT_EQ(vekMultVramWriteLong(0x12345678, start, kCount, nullptr), 0);
        std::vector<uint32_t> longs(kCount + 2);
        ASSERT_EQ(vekMultiVramReadLong(longs.data(), start - 4, kCount + 2, nullptr), 0);
        EXPECT_EQ(longs.front(), 0U);
        EXPECT_EQ(longs.back(), 0U);
        EXPECT_EQ(std::vector<uint32_t>(longs.begin() + 1, longs.end() - 1), std::vector<uint32_t>(kCount, 0x12345678));
    }
}

TEST_F(BlockTransfer, FillsALargeBlockWhole)
{
    constexpr int kCount = 8 << 20;
    ASSERT_EQ(vekMultVramWriteLong(0xa5c30ff0, kGiB + 2, kCount, nullptr), 0);
    std::vector<uint32_t> longs(kCount);
    ASSERT_EQ(vekMultiVramReadLong(longs.data(), kGiB + 2, kCount, nullptr), 0);
    EXPECT_EQ(longs, std::vector<uint32_t>(kCount, 0xa5c30ff0));
    EXPECT_EQ(longAt(kGiB + 2 + 4ULL * kCount), 0U);
}

TEST_F(BlockTransfer, ServesTheLongsInsideAndReportsTheOthers)
{
    ASSERT_EQ(vekMultVramWriteLong(0, kSize - 16, 4, nullptr), 0);
    EXPECT_EQ(vekMultVramWriteLong(0x11111111, kSize - 10, 4, nullptr), VEK_NO_RESPONSE);
    EXPECT_EQ(longAt(kSize - 10), 0x11111111U);
    EXPECT_EQ(longAt(kSize - 6), 0x11111111U);
    uint16_t word = 1;
    EXPECT_EQ(vekVramReadWord(kSize - 2, &word), 0);
    EXPECT_EQ(word, 0) << "the long across the end is not written in part";
    std::vector<uint32_t> longs(4, 0x77777777);
    EXPECT_EQ(vekMultiVramReadLong(longs.data(), kSize - 10, 4, nullptr), VEK_NO_RESPONSE);
    EXPECT_EQ(longs, (std::vector<uint32_t>{0x11111111, 0x11111111, 0xffffffff, 0xffffffff}));
    EXPECT_EQ(vekMultiVramReadLong(longs.data(), ~uint64_t{0} - 7, 4, nullptr), VEK_NO_RESPONSE);
    EXPECT_EQ(longs, std::vector<uint32_t>(4, 0xffffffff)) << "a run does not wrap round to address 0";
    EXPECT_EQ(vekMultVramWriteLong(1, ~uint64_t{0} - 7, 4, nullptr), VEK_NO_RESPONSE);
}

TEST_F(BlockTransfer, ChecksItsArguments)
{
    uint32_t cell = 0x5a5a5a5a;
    EXPECT_EQ(vekMultiVramReadLong(nullptr, 0, 1, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekMultiVramReadLong(&cell, 0, -1, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekMultiVramReadLong(nullptr, 0, -1, folder_.path("none").c_str()), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekMultiVramReadLong(&cell, 0, 1, folder_.path("none").c_str()), VEK_BAD_ARGUMENT);
    EXPECT_NE(access(folder_.path("none").c_str(), F_OK), 0);
    EXPECT_EQ(vekMultVramWriteLong(1, 0, -1, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekMultVramWriteLong(1, 0, -0x7fffffff - 1, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekMultiVramReadLong(&cell, 0, 0, nullptr), 0);
    EXPECT_EQ(cell, 0x5a5a5a5aU);
    ASSERT_EQ(vekVramWriteLong(0, 0x600d), 0);
    EXPECT_EQ(vekMultVramWriteLong(1, 0, 0, nullptr), 0);
    EXPECT_EQ(longAt(0), 0x600dU);
}

TEST_F(BlockTransfer, SavesAndLoadsRawLongs)
{
    std::vector<uint32_t> longs(50000);
    for (size_t index = 0; index < longs.size(); ++index) {
        longs[index] = static_cast<uint32_t>(index * 2654435761U);
    }
    const std::string source = folder_.write("source", rawBytes(longs));
    EXPECT_EQ(vekMultVramWriteLong(0, 0x300001, 50000, source.c_str()), 0);
    EXPECT_EQ(longAt(0x300001 + 4 * 49999), longs.back());
    EXPECT_EQ(vekMultiVramReadLong(nullptr, 0x300001, 50000, folder_.path("saved").c_str()), 0);
    EXPECT_EQ(folder_.read("saved"), rawBytes(longs));
}

TEST_F(BlockTransfer, LoadsNoMoreThanTheCount)
{
    ASSERT_EQ(vekMultVramWriteLong(0, 0x400000, 8, nullptr), 0);
    const std::string source = folder_.write("source", rawBytes({1, 2, 3, 4}));
    EXPECT_EQ(vekMultVramWriteLong(0x99, 0x400000, 2, source.c_str()), 0);
    EXPECT_EQ(longAt(0x400004), 2U);
    EXPECT_EQ(longAt(0x400008), 0U);
}

TEST_F(BlockTransfer, WritesWhatAShortFileHoldsAndFails)
{
    ASSERT_EQ(vekMultVramWriteLong(0, 0x500000, 8, nullptr), 0);
    const std::string source = folder_.write("source", rawBytes({1, 2, 3}) + "ab");
    EXPECT_LT(vekMultVramWriteLong(0x99, 0x500000, 8, source.c_str()), 0);
    EXPECT_EQ(longAt(0x500008), 3U);
    EXPECT_EQ(longAt(0x50000c), 0U) << "half a long is not written";
    EXPECT_LT(vekMultVramWriteLong(0x99, 0x500000, 1, folder_.write("empty", "").c_str()), 0);
    EXPECT_EQ(longAt(0x500000), 1U);
}

TEST_F(BlockTransfer, ChangesNothingForAFileThatCannotBeRead)
{
    ASSERT_EQ(vekMultVramWriteLong(0x77, 0x600000, 4, nullptr), 0);
    const std::string fifo = folder_.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& name :
         {folder_.path("absent"), folder_.path(""), fifo, std::string("/dev/zero"), std::string()}) {
        EXPECT_LT(vekMultVramWriteLong(0x99, 0x600000, 4, name.c_str()), 0) << name;
    }
    EXPECT_EQ(longAt(0x600000), 0x77U);
}

TEST_F(BlockTransfer, FailsWhenTheFileCannotBeCreatedOrWritten)
{
    const std::string fifo = folder_.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& name :
         {folder_.path("absent/file"), folder_.path(""), fifo, std::string("/dev/full"), std::string()}) {
        EXPECT_LT(vekMultiVramReadLong(nullptr, 0, 4, name.c_str()), 0) << name;
    }
}

TEST_F(BlockTransfer, SavesLongsOutsideAsAllOnesAndReportsThem)
{
    ASSERT_EQ(vekVramWriteLong(kSize - 4, 0x12345678), 0);
    EXPECT_EQ(vekMultiVramReadLong(nullptr, kSize - 4, 3, folder_.path("saved").c_str()), VEK_NO_RESPONSE);
    EXPECT_EQ(folder_.read("saved"), rawBytes({0x12345678, 0xffffffff, 0xffffffff}));
}

TEST_F(BlockTransfer, DoesNotWrapRoundBetweenThePiecesOfALongRun)
{
    constexpr int kCount = 50000;
    ASSERT_EQ(vekVramWriteLong(0x9000, 0x600d), 0);
    const std::string ones(4 * kCount, '\xff');
    EXPECT_EQ(vekMultiVramReadLong(nullptr, ~uint64_t{0} - 15, kCount, folder_.path("saved").c_str()), VEK_NO_RESPONSE);
    EXPECT_EQ(folder_.read("saved"), ones);
    EXPECT_EQ(vekMultVramWriteLong(0, ~uint64_t{0} - 15, kCount, folder_.path("saved").c_str()), VEK_NO_RESPONSE);
    EXPECT_EQ(longAt(0x9000), 0x600dU);
}

TEST_F(BlockTransfer, ReplacesAnOlderFile)
{
    folder_.write("saved", std::string(100, 'x'));
    EXPECT_EQ(vekMultiVramReadLong(nullptr, 0x700000, 2, folder_.path("saved").c_str()), 0);
    EXPECT_EQ(folder_.read("saved"), std::string(8, '\0'));
    EXPECT_EQ(vekMultiVramReadLong(nullptr, 0x700000, 0, folder_.path("saved").c_str()), 0);
    EXPECT_EQ(folder_.read("saved"), "");
}

TEST_F(BlockTransfer, RefusesAFifoThatHasAReader)
{
    const std::string fifo = folder_.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const int reader = open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(vekMultiVramReadLong(nullptr, 0x800000, 2, fifo.c_str()), VEK_IO_ERROR);
    char byte = 0;
    EXPECT_EQ(read(reader, &byte, 1), 0);
    close(reader);
}

}  // namespace
