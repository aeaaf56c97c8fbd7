// The `pci` command.

#include <string>

#include "memory_support.h"

namespace memory_test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PciCommand : public ConsoleTest
{
protected:
    static Outcome enter(const std::string& text, int repeat = 0) { return call(doPCI, text, repeat); }
};

TEST_F(PciCommand, ReadsADoubleWord)
{
    recording_vek::pci()[0x10] = 0xfedcba98;
    EXPECT_EQ(enter("pci 10"), (Outcome{0, "00000010: fedcba98\n"}));
    EXPECT_EQ(enter("PCI\t0x10,"), (Outcome{0, "00000010: fedcba98\n"}));
    EXPECT_EQ(enter("pci 3"), (Outcome{0, "00000003: 00000000\n"})) << "alignment is the library's concern";
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPciRead(16)", "vekPciRead(16)", "vekPciRead(3)"));
}

TEST_F(PciCommand, OffsetIsTheLowThirtyTwoBitsAsASignedNumber)
{
    EXPECT_EQ(enter("pci 7fffffff").output, "7fffffff: 00000000\n");
    EXPECT_EQ(enter("pci 80000000").output, "ffffffff80000000: 00000000\n");
    EXPECT_EQ(enter("pci fffffffc").output, "fffffffffffffffc: 00000000\n");
    EXPECT_EQ(enter("pci f00000010").output, "00000010: 00000000\n");
    EXPECT_EQ(enter("pci 180000000").output, "ffffffff80000000: 00000000\n");
    EXPECT_EQ(enter("pci zz").output, "00000000: 00000000\n");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPciRead(2147483647)", "vekPciRead(-2147483648)", "vekPciRead(-4)",
                                               "vekPciRead(16)", "vekPciRead(-2147483648)", "vekPciRead(0)"));
}

TEST_F(PciCommand, WritesADoubleWordAndPrintsNothing)
{
    EXPECT_EQ(enter("pci 4 100007"), Outcome{});
    EXPECT_EQ(enter("pci 0x8,0x123456789 5"), Outcome{});
    EXPECT_EQ(enter("pci 80000000 zz"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekPciWrite(4, 0x100007)", "vekPciWrite(8, 0x23456789)", "vekPciWrite(-2147483648, 0x0)"));
}

TEST_F(PciCommand, NeedsAnOffset)
{
    EXPECT_EQ(enter("pci"), Outcome{-2});
    EXPECT_EQ(enter("pci ,\t "), Outcome{-2});
    EXPECT_EQ(enter("pci\n"), Outcome{-2});
    EXPECT_EQ(runLine("pci"), (Outcome{-2, std::string(console_test::kBadArgumentLine)}));
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(PciCommand, WithoutAnyWordThereIsNothingToDo)
{
    EXPECT_EQ(enter(""), Outcome{});
    EXPECT_EQ(enter(" ,\t\r\n"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(PciCommand, DoesNotLookAtItsWord)
{
    EXPECT_EQ(enter("xyz 10"), (Outcome{0, "00000010: 00000000\n"}));
    EXPECT_EQ(enter("rrb\n10 5"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPciRead(16)", "vekPciWrite(16, 0x5)"));
}

TEST_F(PciCommand, LineEndsAreNoDelimitersBehindTheWord)
{
    EXPECT_EQ(enter("pci \n10"), (Outcome{0, "00000000: 00000000\n"}));
    EXPECT_EQ(enter("pci 4\r\n5"), (Outcome{0, "00000004: 00000000\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPciRead(0)", "vekPciRead(4)"));
}

TEST_F(PciCommand, FailureIsNoError)
{
    recording_vek::pci()[4] = 0xffffffff;
    enter("pci 4");
    recording_vek::setResult("vekPciRead", -22);
    recording_vek::setResult("vekPciWrite", -22);
    EXPECT_EQ(enter("pci 4"), (Outcome{0, "00000004: 00000000\n"}));
    EXPECT_EQ(enter("pci 4 5"), Outcome{});
}

TEST_F(PciCommand, IgnoresTheRepeatFlag)
{
    for (const int repeat : {1, 2, -1}) {
        EXPECT_EQ(enter("pci 10", repeat), (Outcome{0, "00000010: 00000000\n"}));
        EXPECT_EQ(enter("pci", repeat), Outcome{-2});
    }
    runLine("pci 10");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{}) << "an empty line does not run it again";
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(PciCommand, RunsOverTheDriverOnly)
{
    for (const int mode : {VEK_ACCESS_MEM, VEK_ACCESS_SERIAL}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine("pci 10"), (Outcome{-3, std::string(console_test::kModeRefusedLine)}));
        EXPECT_EQ(runLine("crb 10").output, "CRTC0 10: 00\n") << "as the others do not";
        EXPECT_EQ(runLine("vrb 10").output, "00000010: 00\n");
        EXPECT_EQ(runLine("krb 10").output, "0000000000000010: 00\n");
        EXPECT_EQ(runLine("arb 10").output, "00000010: 00\n");
    }
    EXPECT_EQ(recording_vek::deviceCalls().size(), 8U);
}

TEST_F(PciCommand, CallersTextBecomesUpperCase)
{
    std::string text = "pci a,ff";
    EXPECT_EQ(doPCI(text.data(), 0), 0);
    EXPECT_EQ(text.substr(0, 3), "PCI");
    EXPECT_EQ(text.substr(4, 1), "A");
    EXPECT_EQ(text.substr(6), "FF");
}

}  // namespace
}  // namespace memory_test
