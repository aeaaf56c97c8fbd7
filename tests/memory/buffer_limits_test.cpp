// Runs that are gathered in memory before they are saved, and sizes that cannot be had.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "allocation_failure.h"
#include "memory_support.h"

namespace memory_test
{
namespace
{

using console_test::AllocationFailure;
using console_test::takeLargestRequest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint64_t kLargestBuffer = 0x7fffffff;

std::vector<Commands> bufferedCommands()
{
    std::vector<Commands> all = savedRunCommands();
    all.push_back({kVideo, kLong});
    return all;
}

class BufferedRun : public FolderTest, public ::testing::WithParamInterface<Commands>
{
protected:
    Outcome enter(const std::string& text, int repeat = 0) const { return call(it.family.run, text, repeat); }

    /** Expects the address of the next repeated run, read as a byte. */
    void expectRemembered(std::uint64_t address) const
    {
        const Commands any{it.family, kByte};
        takeDeviceCalls();
        enter(any.readRun() + "777 1", 1);
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(any.readCall(address)));
    }

    /** Expects that a buffer for so many items has been asked for. One item more is none too many: it keeps the size of
        an empty run's buffer from being zero. */
    void expectRequestFor(std::uint64_t items) const
    {
        const std::size_t request = takeLargestRequest();
        EXPECT_GE(request, items * size);
        EXPECT_LE(request, (items + 1) * size);
    }

    /** Whether a file that is named is written by the library. */
    bool savedByLibrary() const { return it.readFunction() == "vekVramReadLong"; }

    const Commands it = GetParam();
    const std::uint64_t size = it.width.size;
};

INSTANTIATE_TEST_SUITE_P(Memory, BufferedRun, ::testing::ValuesIn(bufferedCommands()), commandsName);

TEST_P(BufferedRun, NegativeCountIsRefusedQuietly)
{
    for (const char* count : {"80000000", "ffffffff", "c0000000"}) {
        EXPECT_EQ(enter(it.readRun() + "3000 " + count), (Outcome{0, "\n"})) << count;
        EXPECT_THAT(takeDeviceCalls(), IsEmpty());
        expectRemembered(0x3000);
    }
}

// Sizes are signed numbers of 32 bits. A byte count cannot exceed them.
TEST_P(BufferedRun, SizeBeyondTwoGibibytesIsRefusedQuietly)
{
    if (size == 1) {
        return;
    }
    takeLargestRequest();
    for (const std::uint64_t count :
         {kLargestBuffer / size + 1, kLargestBuffer, 0x100000000 / size, 0x100000000 / size + 1}) {
        enter(it.readRun() + "40 1");
        takeDeviceCalls();
        EXPECT_EQ(enter(it.readRun() + "3000 " + hex(count)), (Outcome{0, "\n"})) << count;
        EXPECT_THAT(takeDeviceCalls(), IsEmpty());
        expectRemembered(0x3000);
    }
}

TEST_P(BufferedRun, RefusedSizeTouchesNoFile)
{
    if (savedByLibrary()) {
        return;
    }
    writeFile("F", "kept");
    writeFile("f", "kept");
    EXPECT_EQ(enter(it.readRun() + "3000 80000000 f"), (Outcome{0, "\n"}));
    EXPECT_EQ(enter(it.readRun() + "3000 ffffffff f"), (Outcome{0, "\n"}));
    if (size > 1) {
        EXPECT_EQ(enter(it.readRun() + "3000 " + hex(kLargestBuffer / size + 1) + " f"), (Outcome{0, "\n"}));
    }
    EXPECT_EQ(enter(it.readRun() + "3000 ffffffff g"), (Outcome{0, "\n"}));
    EXPECT_EQ(readFile("F"), "kept");
    EXPECT_EQ(readFile("f"), "kept");
    EXPECT_FALSE(std::filesystem::exists("G"));
    EXPECT_FALSE(std::filesystem::exists("g"));
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(BufferedRun, RepeatedRefusedRunStaysWhereItIs)
{
    enter(Commands{it.family, kByte}.readRun() + "3000 10");
    EXPECT_EQ(enter(it.readRun() + "40 ffffffff", 1), (Outcome{0, "\n"}));
    expectRemembered(0x3010);
}

TEST_P(BufferedRun, LargestSizeIsAskedFor)
{
    const AllocationFailure failure(0x1000000);
    takeLargestRequest();
    const Outcome outcome = enter(it.readRun() + "3000 " + hex(kLargestBuffer / size));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "Out of memory\n");
    expectRequestFor(kLargestBuffer / size);
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(BufferedRun, BufferHasTheSizeOfTheRun)
{
    takeLargestRequest();
    enter(it.readRun() + "3000 123");
    expectRequestFor(0x123);
}

TEST_P(BufferedRun, WithoutMemoryNothingIsRead)
{
    writeFile("F", "kept");
    writeFile("f", "kept");
    enter(Commands{it.family, kByte}.readRun() + "2000 10");
    takeDeviceCalls();
    const AllocationFailure failure(0x100);
    for (const char* file : {"", " f"}) {
        if (*file != '\0' && savedByLibrary()) {
            continue;
        }
        const Outcome outcome = enter(it.readRun() + "3000 100" + file);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.error, "Out of memory\n");
        EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    }
    EXPECT_EQ(readFile("F"), "kept");
    EXPECT_EQ(readFile("f"), "kept");
    expectRemembered(0x2010);
}

class UnbufferedRun : public FolderTest
{
};

// What the library saves itself needs no buffer of the program's.
TEST_F(UnbufferedRun, OfVideoLongsIntoAFile)
{
    const AllocationFailure failure(0);
    EXPECT_EQ(call(doMultVram, "vrls 1000 7fffffff f"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekMultiVramReadLong(null, 0x1000, 2147483647, \"F\")"));
}

TEST_F(UnbufferedRun, OfKernelMemory)
{
    const AllocationFailure failure(0);
    EXPECT_EQ(call(doMultKmem, "krls 0 5"),
              (Outcome{0, "0000000000000000: 00000000 00000000 00000000 00000000\n0000000000000010: 00000000\n"}));
    EXPECT_EQ(call(doMultKmem, "krbs 0 2").output, dump(0, bytes({0, 0})) + "\n");
}

}  // namespace
}  // namespace memory_test
