#include "card/vga_dac.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "drivers/vga_dac.h"
#include "vek.h"

namespace
{

using ::testing::ElementsAre;
using vek::setVgaGain;
using vek::setVgaGains;
using vek::VgaDac;

std::vector<std::uint64_t> gainsOf(VgaDac& dac)
{
    return {dac.read(0, 1).value, dac.read(1, 1).value, dac.read(2, 1).value};
}

TEST(VgaDac, ComesUpWithFullScale)
{
    VgaDac dac;
    EXPECT_THAT(gainsOf(dac), ElementsAre(0xff, 0xff, 0xff));
}

TEST(VgaDac, TakesTheGainOfEachColour)
{
    VgaDac dac;
    EXPECT_EQ(setVgaGains(dac, 0x12, 0x00, 0xfe), VEK_OK);
    EXPECT_THAT(gainsOf(dac), ElementsAre(0x12, 0x00, 0xfe));
    EXPECT_EQ(setVgaGain(dac, 'R', 0x21), VEK_OK);
    EXPECT_THAT(gainsOf(dac), ElementsAre(0x21, 0x00, 0xfe));
    EXPECT_EQ(setVgaGain(dac, 'G', 0x43), VEK_OK);
    EXPECT_THAT(gainsOf(dac), ElementsAre(0x21, 0x43, 0xfe));
    EXPECT_EQ(setVgaGain(dac, 'B', 0x65), VEK_OK);
    EXPECT_THAT(gainsOf(dac), ElementsAre(0x21, 0x43, 0x65));
}

TEST(VgaDac, HasNoOtherColours)
{
    VgaDac dac;
    for (const int colour : {0, 1, int{'r'}, int{'g'}, int{'b'}, int{'C'}, 'R' + 0x100, -'R', -1, 0x7fffffff}) {
        EXPECT_EQ(setVgaGain(dac, colour, 0x11), VEK_BAD_ARGUMENT) << colour;
    }
    EXPECT_THAT(gainsOf(dac), ElementsAre(0xff, 0xff, 0xff));
}

TEST(VgaDac, AnswersBytesAtItsRegistersOnly)
{
    VgaDac dac;
    EXPECT_EQ(dac.read(3, 1).result, VEK_NO_RESPONSE);
    EXPECT_EQ(dac.read(0, 2).result, VEK_NO_RESPONSE);
    EXPECT_EQ(dac.write(3, 1, 0), VEK_NO_RESPONSE);
    EXPECT_EQ(dac.write(0, 4, 0), VEK_NO_RESPONSE);
    EXPECT_EQ(dac.write(~std::uint64_t{0}, 1, 0), VEK_NO_RESPONSE);
    EXPECT_THAT(gainsOf(dac), ElementsAre(0xff, 0xff, 0xff));
}

// Takes as many writes as it is told to.
class FailingDac final : public vek::AddressSpace
{
public:
    explicit FailingDac(int served) : served_(served) {}

    vek::ReadResult read(std::uint64_t /*address*/, unsigned /*width*/) override { return vek::kUnanswered; }
    int write(std::uint64_t /*address*/, unsigned /*width*/, std::uint64_t /*value*/) override
    {
        return served_-- > 0 ? VEK_OK : VEK_PROTECTED;
    }

private:
    int served_;
};

TEST(VgaDac, FailuresAreReported)
{
    for (const int served : {0, 1, 2}) {
        FailingDac dac(served);
        EXPECT_EQ(setVgaGains(dac, 1, 2, 3), VEK_PROTECTED) << served;
    }
}

}  // namespace
