#include "drivers/spi_flash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "card/spi_nor_flash.h"
#include "faulty_spi_bus.h"
#include "test_clock.h"
#include "test_pause.h"
#include "vek.h"

namespace
{

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kSize = 0x20'0000;
constexpr std::uint8_t kProgram = 0x02;
constexpr std::uint8_t kRead = 0x03;
constexpr std::uint8_t kEraseSector = 0x20;
constexpr std::uint8_t kEraseBlock = 0xd8;
constexpr std::uint64_t kSomeSeconds = 5'000'000;

Bytes counting(std::size_t count)
{
    Bytes bytes(count);
    std::uint32_t value = 1;
    for (std::uint8_t& byte : bytes) {
        value = value * 1'664'525 + 1'013'904'223;
        byte = static_cast<std::uint8_t>(value >> 24);
    }
    return bytes;
}

class SpiFlashDriver : public testing::Test
{
protected:
    Bytes read(std::uint32_t address, std::size_t count)
    {
        Bytes bytes(count, 0xee);
        EXPECT_EQ(flash.read(address, bytes), VEK_OK);
        return bytes;
    }

    void fill(std::uint32_t address, std::size_t count, std::uint8_t value)
    {
        ASSERT_EQ(flash.program(address, Bytes(count, value)), VEK_OK);
        bus.commands.clear();
    }

    TestClock clock;
    TestPause pause{clock};
    vek::SpiNorFlash chip{clock};
    FaultySpiBus bus{chip};
    vek::SpiFlash flash{bus, pause};
};

TEST_F(SpiFlashDriver, ReadsARunByOneCommand)
{
    EXPECT_EQ(read(0x12345, 0x54321), Bytes(0x54321, 0xff));
    EXPECT_THAT(bus.addressesOf(kRead), ElementsAre(0x12345));
}

TEST_F(SpiFlashDriver, ProgramsPageByPage)
{
    const Bytes data = counting(0x300);
    ASSERT_EQ(flash.program(0x1f80, data), VEK_OK);
    EXPECT_THAT(bus.addressesOf(kProgram), ElementsAre(0x1f80, 0x2000, 0x2100, 0x2200));
    EXPECT_EQ(read(0x1f80, data.size()), data);
    EXPECT_THAT(read(0x1f7f, 1), ElementsAre(0xff));
    EXPECT_THAT(read(0x2280, 1), ElementsAre(0xff));
}

TEST_F(SpiFlashDriver, EnablesEachWrite)
{
    ASSERT_EQ(flash.program(0, counting(0x200)), VEK_OK);
    std::vector<std::uint8_t> writes;
    for (const auto& [opcode, address] : bus.commands) {
        if (opcode == 0x06 || opcode == kProgram) {
            writes.push_back(opcode);
        }
    }
    EXPECT_THAT(writes, ElementsAre(0x06, kProgram, 0x06, kProgram));
}

TEST_F(SpiFlashDriver, ProgramsAndErasesManyBlocks)
{
    const Bytes data = counting(0x60000);
    ASSERT_EQ(flash.program(kSize - 0x60000, data), VEK_OK);
    EXPECT_EQ(read(kSize - 0x60000, data.size()), data);
    ASSERT_EQ(flash.erase(0, kSize), VEK_OK);
    EXPECT_EQ(read(0, kSize), Bytes(kSize, 0xff));
    EXPECT_EQ(bus.addressesOf(kEraseBlock).size(), 32U);
    EXPECT_THAT(bus.addressesOf(kEraseSector), IsEmpty());
}

TEST_F(SpiFlashDriver, SkipsPagesThatNeedNoProgramming)
{
    Bytes data(0x300, 0xff);
    data[0x210] = 0x12;
    ASSERT_EQ(flash.program(0, data), VEK_OK);
    EXPECT_THAT(bus.addressesOf(kProgram), ElementsAre(0x200));
    EXPECT_EQ(read(0, 0x300), data);
}

TEST_F(SpiFlashDriver, ReportsBitsThatOnlyAnEraseSets)
{
    fill(0x100, 4, 0x0f);
    EXPECT_EQ(flash.program(0x100, Bytes{0x0e, 0x0f, 0x1f, 0x0f}), VEK_BAD_DATA);
    EXPECT_THAT(read(0x100, 4), ElementsAre(0x0e, 0x0f, 0x0f, 0x0f));
    // Neither does a page that needs no programming set them.
    EXPECT_EQ(flash.program(0x100, Bytes(4, 0xff)), VEK_BAD_DATA);
    // It ends there.
    bus.commands.clear();
    EXPECT_EQ(flash.program(0x1fc, Bytes(8, 0x55)), VEK_OK);
    EXPECT_EQ(flash.program(0x1fc, Bytes(8, 0xaa)), VEK_BAD_DATA);
    EXPECT_THAT(bus.addressesOf(kProgram), ElementsAre(0x1fc, 0x200, 0x1fc));
    EXPECT_THAT(read(0x1fc, 8), ElementsAre(0, 0, 0, 0, 0x55, 0x55, 0x55, 0x55));
}

struct EraseCase {
    std::uint32_t address;
    std::uint32_t size;
    std::vector<std::uint32_t> sectors;
    std::vector<std::uint32_t> blocks;
};

TEST_F(SpiFlashDriver, ErasesByBlocksWhereTheyLieInside)
{
    const std::vector<EraseCase> cases{
        {0x5432, 1, {0x5000}, {}},
        {0x5fff, 2, {0x5000, 0x6000}, {}},
        {0x10000, 0x10000, {}, {0x10000}},
        {0x10001, 0xffff, {}, {0x10000}},
        {0x10fff, 0xf001, {}, {0x10000}},
        {0x11000,
         0xf000,
         {0x11000, 0x12000, 0x13000, 0x14000, 0x15000, 0x16000, 0x17000, 0x18000, 0x19000, 0x1a000, 0x1b000, 0x1c000,
          0x1d000, 0x1e000, 0x1f000},
         {}},
        {0x0e800, 0x22000, {0x0e000, 0x0f000, 0x30000}, {0x10000, 0x20000}},
        {0x1ff000, 0x1000, {0x1ff000}, {}},
        {0x1f0000, 0x10000, {}, {0x1f0000}},
    };
    for (const auto& [address, size, sectors, blocks] : cases) {
        bus.commands.clear();
        EXPECT_EQ(flash.erase(address, size), VEK_OK);
        EXPECT_EQ(bus.addressesOf(kEraseSector), sectors) << address;
        EXPECT_EQ(bus.addressesOf(kEraseBlock), blocks) << address;
    }
}

TEST_F(SpiFlashDriver, ErasesTheSectorsOfTheRangeOnly)
{
    fill(0, 0x40000, 0x00);
    ASSERT_EQ(flash.erase(0x0e800, 0x22000), VEK_OK);
    const Bytes found = read(0, 0x40000);
    for (std::uint32_t at = 0; at < found.size(); ++at) {
        ASSERT_EQ(found[at], at >= 0xe000 && at < 0x31000 ? 0xff : 0x00) << at;
    }
}

TEST_F(SpiFlashDriver, ProtectsTheWholeFlash)
{
    fill(0, 4, 0x0f);
    ASSERT_EQ(flash.protect(), VEK_OK);
    EXPECT_EQ(flash.program(0, Bytes(4, 0)), VEK_PROTECTED);
    EXPECT_EQ(flash.program(kSize - 4, Bytes(4, 0)), VEK_PROTECTED);
    EXPECT_EQ(flash.erase(0, 1), VEK_PROTECTED);
    EXPECT_EQ(flash.erase(0x10000, 0x20000), VEK_PROTECTED);
    EXPECT_THAT(bus.addressesOf(kProgram), IsEmpty());
    EXPECT_THAT(bus.addressesOf(kEraseSector), IsEmpty());
    EXPECT_THAT(bus.addressesOf(kEraseBlock), IsEmpty());
    EXPECT_THAT(read(0, 4), Each(0x0f));
    ASSERT_EQ(flash.unprotect(), VEK_OK);
    EXPECT_EQ(flash.erase(0, 1), VEK_OK);
    EXPECT_EQ(flash.program(kSize - 4, Bytes(4, 0)), VEK_OK);
    EXPECT_THAT(read(0, 4), Each(0xff));
}

TEST_F(SpiFlashDriver, WritesTheStatusRegisterOnlyForAChange)
{
    ASSERT_EQ(flash.unprotect(), VEK_OK);
    EXPECT_THAT(bus.commands, testing::Not(Contains(Pair(0x01, testing::_))));
    ASSERT_EQ(flash.protect(), VEK_OK);
    ASSERT_EQ(flash.protect(), VEK_OK);
    EXPECT_EQ(bus.addressesOf(0x01).size(), 1U);
}

TEST_F(SpiFlashDriver, RefusesWhatIsProtectedInPart)
{
    // The last 64 KiB; SRP0 stays as it is.
    chip.select();
    chip.write(Bytes{0x06});
    chip.deselect();
    chip.select();
    chip.write(Bytes{0x01, 0x84});
    chip.deselect();
    clock.advanceMilliseconds(1);
    EXPECT_EQ(flash.program(0x1efffc, Bytes(8, 0)), VEK_PROTECTED);
    EXPECT_EQ(flash.erase(0x1ef000, 0x1001), VEK_PROTECTED);
    EXPECT_THAT(read(0x1efffc, 8), Each(0xff));
    EXPECT_EQ(flash.program(0x1efff8, Bytes(8, 0)), VEK_OK);
    ASSERT_EQ(flash.protect(), VEK_OK);
    ASSERT_EQ(flash.unprotect(), VEK_OK);
    Bytes status(1);
    chip.select();
    chip.write(Bytes{0x05});
    chip.read(status);
    chip.deselect();
    EXPECT_THAT(status, ElementsAre(0x80));
}

TEST_F(SpiFlashDriver, FindsNoFlashOnASilentBus)
{
    for (const std::uint8_t line : Bytes{0x00, 0xff}) {
        bus.idBytes = line;
        bus.status = line;
        Bytes bytes(4, 0xee);
        EXPECT_EQ(flash.read(0, bytes), VEK_NO_RESPONSE);
        EXPECT_THAT(bytes, Each(0xee));
        EXPECT_EQ(flash.erase(0, 1), VEK_NO_RESPONSE);
        EXPECT_EQ(flash.program(0, bytes), VEK_NO_RESPONSE);
        EXPECT_EQ(flash.protect(), VEK_NO_RESPONSE);
        EXPECT_EQ(flash.unprotect(), VEK_NO_RESPONSE);
    }
    bus.idBytes.reset();
    bus.status.reset();
    EXPECT_THAT(read(0, 4), Each(0xff));
}

TEST_F(SpiFlashDriver, TakesTheSizeFromTheParametersBeforeTheId)
{
    bus.capacity = 0x16;
    EXPECT_THAT(read(0, 1), Each(0xff));
    bus.sfdpBytes = 0xff;  // a flash without parameters
    Bytes bytes(4, 0xee);
    for (const std::uint8_t capacity : Bytes{0x00, 0x14, 0x16, 0x20, 0xfe}) {
        bus.capacity = capacity;
        EXPECT_EQ(flash.read(0, bytes), VEK_NO_RESPONSE) << int{capacity};
        EXPECT_THAT(bytes, Each(0xee));
    }
    bus.capacity = 0x15;
    EXPECT_EQ(flash.read(0, bytes), VEK_OK);
    EXPECT_THAT(bytes, Each(0xff));
}

TEST_F(SpiFlashDriver, WaitsForAWriteThatSomebodyElseBegan)
{
    chip.select();
    chip.write(Bytes{0x06});
    chip.deselect();
    chip.select();
    chip.write(Bytes{kEraseBlock, 0, 0, 0});
    chip.deselect();
    EXPECT_THAT(read(0, 1), ElementsAre(0xff));
    EXPECT_GE(pause.total, 4'900U);
}

TEST_F(SpiFlashDriver, GivesUpOnAFlashThatStaysBusy)
{
    bus.status = 0x03;
    EXPECT_EQ(flash.program(0, Bytes(4, 0)), VEK_TIMED_OUT);
    EXPECT_EQ(flash.erase(0, 1), VEK_TIMED_OUT);
    EXPECT_EQ(flash.protect(), VEK_TIMED_OUT);
    bus.idBytes = 0xff;
    Bytes bytes(4, 0xee);
    EXPECT_EQ(flash.read(0, bytes), VEK_TIMED_OUT);
    EXPECT_THAT(bytes, Each(0xee));
    EXPECT_LT(pause.total, kSomeSeconds);
}

TEST_F(SpiFlashDriver, NoticesWhatTheFlashDidNotDo)
{
    fill(0x3000, 4, 0x00);
    for (const std::uint8_t opcode : {std::uint8_t{0x06}, kProgram, kEraseSector}) {
        bus.lost = {opcode};
        if (opcode != kEraseSector) {
            EXPECT_EQ(flash.program(0x2000, Bytes(4, 0)), VEK_BAD_DATA) << int{opcode};
        }
        if (opcode != kProgram) {
            EXPECT_EQ(flash.erase(0x3000, 1), VEK_BAD_DATA) << int{opcode};
        }
    }
    bus.lost = {0x01};
    EXPECT_EQ(flash.protect(), VEK_PROTECTED);
    bus.lost.clear();
    ASSERT_EQ(flash.protect(), VEK_OK);
    bus.lost = {0x01};
    EXPECT_EQ(flash.unprotect(), VEK_PROTECTED);
}

TEST_F(SpiFlashDriver, PassesOnWhatTheBusReports)
{
    constexpr int kMost = 5'000;
    int steps = 0;
    const auto failsUntilDone = [&](auto use) {
        // The many looks at the status are all alike.
        for (steps = 0; steps < kMost; steps += steps < 40 ? 1 : 97) {
            bus.stepsUntilFailure = steps;
            const int result = use();
            if (result == VEK_OK) {
                break;
            }
            ASSERT_EQ(result, VEK_IO_ERROR) << steps;
        }
        bus.stepsUntilFailure = -1;
        EXPECT_GT(steps, 5);
        EXPECT_LT(steps, kMost);
    };
    Bytes bytes(4, 0xee);
    failsUntilDone([&] {
        const int result = flash.read(0, bytes);
        EXPECT_THAT(bytes, Each(result == VEK_OK ? 0xff : 0xee));
        return result;
    });
    failsUntilDone([&] { return flash.erase(0, 1); });
    failsUntilDone([&] {
        clock.advanceMilliseconds(10);
        return flash.program(0, Bytes(4, 0x11));
    });
    failsUntilDone([&] {
        clock.advanceMilliseconds(10);
        return flash.protect();
    });
    EXPECT_EQ(flash.unprotect(), VEK_OK);
}

}  // namespace
