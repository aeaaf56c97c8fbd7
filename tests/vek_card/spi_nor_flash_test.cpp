#include "card/spi_nor_flash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include "drivers/spi_nor.h"
#include "test_clock.h"
#include "vek.h"

namespace
{

using testing::Each;
using testing::ElementsAre;
using vek::SpiNorFlash;
using vek::spi_nor::Range;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kSize = 0x20'0000;

class NorFlash : public testing::Test
{
protected:
    /// Sends a command, then receives so many bytes.
    Bytes command(const Bytes& sent, std::size_t count = 0)
    {
        Bytes received(count, 0xee);
        flash.select();
        EXPECT_EQ(flash.write(sent), VEK_OK);
        EXPECT_EQ(flash.read(received), VEK_OK);
        flash.deselect();
        return received;
    }

    static Bytes at(std::uint8_t opcode, std::uint32_t address, const Bytes& data = {})
    {
        Bytes bytes{opcode, static_cast<std::uint8_t>(address >> 16), static_cast<std::uint8_t>(address >> 8),
                    static_cast<std::uint8_t>(address)};
        bytes.insert(bytes.end(), data.begin(), data.end());
        return bytes;
    }

    std::uint8_t status() { return command({0x05}, 1).front(); }
    Bytes read(std::uint32_t address, std::size_t count) { return command(at(0x03, address), count); }

    /// Sends a command behind a write enable and lets all of its time pass.
    void change(const Bytes& sent)
    {
        command({0x06});
        command(sent);
        clock.advanceMilliseconds(10);
    }

    void program(std::uint32_t address, const Bytes& data) { change(at(0x02, address, data)); }

    TestClock clock;
    SpiNorFlash flash{clock};
};

TEST_F(NorFlash, IsShippedErasedUnprotectedAndIdle)
{
    EXPECT_EQ(status(), 0x00);
    EXPECT_EQ(read(0, kSize), Bytes(kSize, 0xff));
}

TEST_F(NorFlash, HasTheIdOfA16MbitFlash)
{
    EXPECT_THAT(command({0x9f}, 3), ElementsAre(0xef, 0x40, 0x15));
}

TEST_F(NorFlash, DescribesItself)
{
    const Bytes parameters = command(at(0x5a, 0, {0}), 0x34 + 4);
    EXPECT_EQ(std::string(parameters.begin(), parameters.begin() + 4), "SFDP");
    const auto word = [&](std::size_t offset) {
        return parameters[offset] | parameters[offset + 1] << 8 | parameters[offset + 2] << 16 |
               static_cast<unsigned>(parameters[offset + 3]) << 24;
    };
    EXPECT_EQ(word(4), 0xff000100U);  // revision 1.0, one header
    EXPECT_EQ(word(8), 0x09010000U);  // JEDEC, revision 1.0, 9 words
    const std::size_t table = word(12) & 0xffffff;
    EXPECT_EQ(word(12) >> 24, 0xffU);
    EXPECT_EQ(word(table) & 0xffff, 0x20e5U);       // 4 KiB by 20h
    EXPECT_EQ((word(table + 4) + 1) / 8, kSize);    // density in bits less one
    EXPECT_EQ(word(table + 28), 0x520f200cU);       // 2^12 by 20h, 2^15 by 52h
    EXPECT_EQ(word(table + 32) & 0xffff, 0xd810U);  // 2^16 by D8h
    EXPECT_THAT(Bytes(parameters.begin() + 0x34, parameters.end()), Each(0xff));
    EXPECT_THAT(command(at(0x5a, 1, {0}), 3), ElementsAre('F', 'D', 'P'));
}

TEST_F(NorFlash, ProgramsBytesAndReadsThemByBothReads)
{
    program(0x12345, {1, 2, 3});
    EXPECT_THAT(read(0x12344, 5), ElementsAre(0xff, 1, 2, 3, 0xff));
    EXPECT_THAT(command(at(0x0b, 0x12345, {0x77}), 3), ElementsAre(1, 2, 3));
}

TEST_F(NorFlash, OnlyClearsBitsWhenItPrograms)
{
    program(0x100, {0xf0});
    program(0x100, {0x3c});
    EXPECT_THAT(read(0x100, 1), ElementsAre(0x30));
}

TEST_F(NorFlash, WrapsRoundInThePage)
{
    program(0x2fe, {1, 2, 3, 4});
    EXPECT_THAT(read(0x2fe, 4), ElementsAre(1, 2, 0xff, 0xff));
    EXPECT_THAT(read(0x200, 3), ElementsAre(3, 4, 0xff));
}

TEST_F(NorFlash, TakesTheLastPageOfTooMuchData)
{
    Bytes data(300);
    std::iota(data.begin(), data.end(), std::uint8_t{0});
    program(0x400, data);
    const Bytes page = read(0x400, 256);
    EXPECT_EQ(page[43], static_cast<std::uint8_t>(256 + 43));
    EXPECT_EQ(page[44], 44);
    EXPECT_EQ(page[255], 255);
    EXPECT_THAT(read(0x500, 1), ElementsAre(0xff));
}

TEST_F(NorFlash, NeedsAWriteEnableForEachChange)
{
    command(at(0x02, 0, {0}));
    EXPECT_EQ(status(), 0x00);
    command({0x01, 0x1c});
    EXPECT_EQ(status(), 0x00);
    program(0, {0x55});
    command(at(0x20, 0));
    command(at(0xd8, 0));
    EXPECT_THAT(read(0, 1), ElementsAre(0x55));
    command({0x06});
    EXPECT_EQ(status(), 0x02);
    command({0x04});
    EXPECT_EQ(status(), 0x00);
    command(at(0x20, 0));
    EXPECT_THAT(read(0, 1), ElementsAre(0x55));
}

struct Duration {
    Bytes command;
    std::uint64_t nanoseconds;
};

TEST_F(NorFlash, IsBusyForTheTimeOfAChange)
{
    const std::vector<Duration> durations{{at(0x02, 0, {0}), SpiNorFlash::kProgramTime},
                                          {at(0x20, 0), SpiNorFlash::kEraseSectorTime},
                                          {at(0x52, 0), SpiNorFlash::kEraseHalfBlockTime},
                                          {at(0xd8, 0), SpiNorFlash::kEraseBlockTime},
                                          {{0x01, 0x40}, SpiNorFlash::kWriteStatusTime}};
    for (const auto& [sent, nanoseconds] : durations) {
        command({0x06});
        command(sent);
        EXPECT_EQ(status() & 0x03, 0x03) << int{sent[0]};
        clock.advanceNanoseconds(nanoseconds - 1);
        EXPECT_EQ(status() & 0x03, 0x03) << int{sent[0]};
        clock.advanceNanoseconds(1);
        EXPECT_EQ(status() & 0x03, 0x00) << int{sent[0]};
    }
}

TEST_F(NorFlash, ShowsTheEndOfAChangeInOneReadOfTheStatus)
{
    command({0x06});
    command(at(0x20, 0));
    flash.select();
    EXPECT_EQ(flash.write(Bytes{0x05}), VEK_OK);
    Bytes seen(1);
    EXPECT_EQ(flash.read(seen), VEK_OK);
    EXPECT_EQ(seen[0], 0x03);
    clock.advanceNanoseconds(SpiNorFlash::kEraseSectorTime);
    EXPECT_EQ(flash.read(seen), VEK_OK);
    EXPECT_EQ(seen[0], 0x00);
    flash.deselect();
}

TEST_F(NorFlash, IgnoresEverythingElseWhileItIsBusy)
{
    program(0, {0x55});
    command({0x06});
    command(at(0x02, 0x1000, {0x33}));
    EXPECT_THAT(read(0, 2), ElementsAre(0xff, 0xff));
    EXPECT_THAT(command({0x9f}, 3), Each(0xff));
    EXPECT_THAT(command(at(0x5a, 0, {0}), 4), Each(0xff));
    command({0x04});
    command(at(0x20, 0));
    command(at(0x02, 1, {0}));
    EXPECT_EQ(status(), 0x03);
    clock.advanceNanoseconds(SpiNorFlash::kProgramTime);
    EXPECT_THAT(read(0, 2), ElementsAre(0x55, 0xff));
    EXPECT_THAT(read(0x1000, 1), ElementsAre(0x33));
}

TEST_F(NorFlash, ErasesExactlyTheUnitAroundAnAddress)
{
    struct Unit {
        std::uint8_t opcode;
        std::uint32_t size;
    };
    for (const auto& [opcode, size] : {Unit{0x20, 0x1000}, Unit{0x52, 0x8000}, Unit{0xd8, 0x10000}}) {
        const std::uint32_t first = 0x1a0000;
        for (const std::uint32_t place : {first - 1, first, first + size - 1, first + size}) {
            program(place, {0});
        }
        change(at(opcode, first + size / 2 + 3));
        EXPECT_THAT(read(first - 1, 2), ElementsAre(0x00, 0xff)) << int{opcode};
        EXPECT_THAT(read(first + size - 1, 2), ElementsAre(0xff, 0x00)) << int{opcode};
    }
}

TEST_F(NorFlash, CarriesOutNothingThatIsNotWhole)
{
    program(0, {0x55});
    for (const Bytes& sent : {Bytes{0x20}, Bytes{0x20, 0, 0}, at(0x20, 0, {0}), Bytes{0xd8, 0, 0}, at(0x52, 0, {1}),
                              at(0x02, 0), Bytes{0x02, 0, 0}, Bytes{0x01}, Bytes{0x01, 0x1c, 0x00}, Bytes{}}) {
        command({0x06});
        command(sent);
        EXPECT_EQ(status(), 0x02);
        command({0x04});
    }
    command({0x06, 0x00});
    EXPECT_EQ(status(), 0x00);
    command({0x06});
    command({0x04, 0x00});
    EXPECT_EQ(status(), 0x02);
    // To read is to clock on as well.
    command(at(0x20, 0), 1);
    command({0x01, 0x1c}, 1);
    EXPECT_EQ(status(), 0x02);
    EXPECT_THAT(read(0, 1), ElementsAre(0x55));
}

TEST_F(NorFlash, TakesACommandInAnyPieces)
{
    command({0x06});
    flash.select();
    for (const std::uint8_t byte : at(0x02, 0x10ff, {1, 2, 3})) {
        EXPECT_EQ(flash.write(Bytes{byte}), VEK_OK);
    }
    flash.deselect();
    clock.advanceMilliseconds(1);
    flash.select();
    EXPECT_EQ(flash.write(Bytes{0x03, 0x00}), VEK_OK);
    EXPECT_EQ(flash.write(Bytes{0x10, 0xff}), VEK_OK);
    Bytes one(1);
    EXPECT_EQ(flash.read(one), VEK_OK);
    EXPECT_EQ(one[0], 1);
    // It sends also while it is written to.
    EXPECT_EQ(flash.write(Bytes(0xff)), VEK_OK);
    EXPECT_EQ(flash.read(one), VEK_OK);
    EXPECT_EQ(one[0], 0xff);
    flash.deselect();
    EXPECT_THAT(read(0x1000, 2), ElementsAre(2, 3));
}

TEST_F(NorFlash, CountsTheBytesOfAReadForItsHeader)
{
    program(0, {0x55});
    flash.select();
    EXPECT_EQ(flash.write(Bytes{0x03}), VEK_OK);
    Bytes bytes(5);
    EXPECT_EQ(flash.read(bytes), VEK_OK);
    flash.deselect();
    EXPECT_THAT(bytes, ElementsAre(0xff, 0xff, 0xff, 0x55, 0xff));
}

TEST_F(NorFlash, ReadsOnFromItsEndToItsBeginning)
{
    program(0, {1});
    program(kSize - 1, {2});
    EXPECT_THAT(read(kSize - 2, 4), ElementsAre(0xff, 2, 1, 0xff));
    EXPECT_THAT(read(0xe00000, 1), ElementsAre(1));
}

TEST_F(NorFlash, IsDeafWithoutChipSelect)
{
    Bytes bytes(2);
    EXPECT_EQ(flash.write(Bytes{0x9f}), VEK_OK);
    EXPECT_EQ(flash.read(bytes), VEK_OK);
    EXPECT_THAT(bytes, Each(0xff));
    flash.deselect();
    EXPECT_EQ(status(), 0x00);
}

TEST_F(NorFlash, KeepsTheWritableBitsOfItsStatus)
{
    change({0x01, 0xff});
    EXPECT_EQ(status(), 0xfc);
    change({0x01, 0x03});
    EXPECT_EQ(status(), 0x00);
}

struct Protection {
    std::uint8_t status;
    Range range;
};

/** The rows of the datasheet's protection table: SEC, TB, BP2 to BP0 in bits 6 to 2. */
class NorProtection : public NorFlash, public testing::WithParamInterface<Protection>
{
};
INSTANTIATE_TEST_SUITE_P(Rows, NorProtection,
                         testing::Values(Protection{0x00, {0, 0}}, Protection{0x60, {0, 0}},                        //
                                         Protection{0x04, {0x1f0000, kSize}}, Protection{0x08, {0x1e0000, kSize}},  //
                                         Protection{0x0c, {0x1c0000, kSize}}, Protection{0x10, {0x180000, kSize}},  //
                                         Protection{0x14, {0x100000, kSize}},                                       //
                                         Protection{0x24, {0, 0x010000}}, Protection{0x28, {0, 0x020000}},          //
                                         Protection{0x2c, {0, 0x040000}}, Protection{0x30, {0, 0x080000}},          //
                                         Protection{0x34, {0, 0x100000}},                                           //
                                         Protection{0x18, {0, kSize}}, Protection{0x1c, {0, kSize}},
                                         Protection{0x7c, {0, kSize}},                                              //
                                         Protection{0x38, {0, kSize}}, Protection{0x58, {0, kSize}},                //
                                         Protection{0x44, {0x1ff000, kSize}}, Protection{0x48, {0x1fe000, kSize}},  //
                                         Protection{0x4c, {0x1fc000, kSize}}, Protection{0x50, {0x1f8000, kSize}},  //
                                         Protection{0x54, {0x1f8000, kSize}},                                       //
                                         Protection{0x64, {0, 0x001000}}, Protection{0x68, {0, 0x002000}},          //
                                         Protection{0x6c, {0, 0x004000}}, Protection{0x70, {0, 0x008000}},          //
                                         Protection{0x74, {0, 0x008000}}));

TEST_P(NorProtection, CoversItsRange)
{
    const auto& [bits, range] = GetParam();
    EXPECT_EQ(vek::spi_nor::protectedBy(bits), range);
    EXPECT_EQ(vek::spi_nor::protectedBy(bits | 0x83), range);
}

TEST_P(NorProtection, KeepsItsRangeFromChange)
{
    const auto& [bits, range] = GetParam();
    std::vector<std::uint32_t> places{0, kSize - 1};
    for (const std::uint32_t border : {range.first, range.end}) {
        if (border > 0 && border < kSize) {
            places.insert(places.end(), {border - 1, border});
        }
    }
    for (const std::uint32_t place : places) {
        program(place, {0x0f});
    }
    change({0x01, bits});
    for (const std::uint32_t place : places) {
        const bool kept = place >= range.first && place < range.end;
        program(place, {0x00});
        EXPECT_EQ(read(place, 1).front(), kept ? 0x0f : 0x00) << place;
        change(at(0x20, place));
        EXPECT_EQ(read(place, 1).front(), kept ? 0x0f : 0xff) << place;
    }
}

TEST_F(NorFlash, DoesNotEraseABlockThatIsProtectedInPart)
{
    program(0x1f0000, {0x11});
    change({0x01, 0x44});  // the last sector
    change(at(0xd8, 0x1f0000));
    EXPECT_THAT(read(0x1f0000, 1), ElementsAre(0x11));
    EXPECT_EQ(status(), 0x46);
    change(at(0x52, 0x1f0000));
    EXPECT_THAT(read(0x1f0000, 1), ElementsAre(0xff));
}

}  // namespace
