#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "child_process.h"
#include "console_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::registers;
using ::testing::ElementsAre;

constexpr std::uint64_t kQuad = 0x1122334455667788;

/** Sixteen zero bytes of a dump, label and all. */
std::string zeroLine(const std::string& label)
{
    return label + ": 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 \t................\n";
}

/** The last line of a dump: its label, its bytes and its characters. */
std::string partLine(const std::string& label, const std::string& digits, const std::string& characters)
{
    std::string field = label + ": " + digits;
    field.resize(58, ' ');
    return field + "\t" + characters + "\n";
}

class SingleRegisterTest : public ConsoleTest
{
};

TEST_F(SingleRegisterTest, ReadsPrintOneItem)
{
    registers().poke(0x10, kQuad);
    EXPECT_EQ(call(doReg, "rrb 10"), (Outcome{0, "00000010: 88\n"}));
    EXPECT_EQ(call(doReg, "rrw 10"), (Outcome{0, "00000010: 7788\n"}));
    EXPECT_EQ(call(doReg, "rrl 10"), (Outcome{0, "00000010: 55667788\n"}));
    EXPECT_EQ(call(doReg, "rrq 10"), (Outcome{0, "00000010: 55667788 11223344\n"}));
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekRegReadByte(0x10)", "vekRegReadWord(0x10)",
                                                    "vekRegReadLong(0x10)", "vekRegReadQuad(0x10)"));
}

TEST_F(SingleRegisterTest, ReadsPadItemsWithZeros)
{
    registers().poke<std::uint64_t>(0x10, 0x200000001);
    EXPECT_EQ(call(doReg, "rrb 10").output, "00000010: 01\n");
    EXPECT_EQ(call(doReg, "rrw 10").output, "00000010: 0001\n");
    EXPECT_EQ(call(doReg, "rrl 10").output, "00000010: 00000001\n");
    EXPECT_EQ(call(doReg, "rrq 10").output, "00000010: 00000001 00000002\n");
}

TEST_F(SingleRegisterTest, ReadsShowHighBitsUnsigned)
{
    registers().poke<std::uint64_t>(0x10, 0xfffefdfcfbfaf9f8);
    EXPECT_EQ(call(doReg, "rrb 10").output, "00000010: f8\n");
    EXPECT_EQ(call(doReg, "rrw 10").output, "00000010: f9f8\n");
    EXPECT_EQ(call(doReg, "rrl 10").output, "00000010: fbfaf9f8\n");
    EXPECT_EQ(call(doReg, "rrq 10").output, "00000010: fbfaf9f8 fffefdfc\n");
}

TEST_F(SingleRegisterTest, ReadsTakeAddressZeroWithoutAnArgument)
{
    call(doReg, "rrb 77");
    takeDeviceCalls();
    EXPECT_EQ(call(doReg, "rrb"), (Outcome{0, "00000000: 00\n"}));
    EXPECT_EQ(call(doReg, "rrw ,"), (Outcome{0, "00000000: 0000\n"}));
    EXPECT_EQ(call(doReg, "rrl\t"), (Outcome{0, "00000000: 00000000\n"}));
    EXPECT_EQ(call(doReg, "rrq\r\n"), (Outcome{0, "00000000: 00000000 00000000\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegReadByte(0x0)", "vekRegReadWord(0x0)", "vekRegReadLong(0x0)",
                                               "vekRegReadQuad(0x0)"));
}

TEST_F(SingleRegisterTest, AddressesAreHexadecimalAndSixtyFourBitsWide)
{
    EXPECT_EQ(call(doReg, "rrb 0x1aB").output, "000001ab: 00\n");
    EXPECT_EQ(call(doReg, "rrb 0X1aB").output, "000001ab: 00\n");
    EXPECT_EQ(call(doReg, "rrb zz").output, "00000000: 00\n");
    EXPECT_EQ(call(doReg, "rrb 12g4").output, "00000012: 00\n");
    EXPECT_EQ(call(doReg, "rrb 123456789").output, "123456789: 00\n");
    EXPECT_EQ(call(doReg, "rrw ffff800000001000").output, "ffff800000001000: 0000\n");
    EXPECT_EQ(call(doReg, "rrl 11223344556677889").output, "1223344556677889: 00000000\n");
    EXPECT_EQ(call(doReg, "rrq 100000000").output, "100000000: 00000000 00000000\n");
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekRegReadByte(0x1ab)", "vekRegReadByte(0x1ab)", "vekRegReadByte(0x0)",
                            "vekRegReadByte(0x12)", "vekRegReadByte(0x123456789)", "vekRegReadWord(0xffff800000001000)",
                            "vekRegReadLong(0x1223344556677889)", "vekRegReadQuad(0x100000000)"));
}

TEST_F(SingleRegisterTest, AddressesNeedNoAlignment)
{
    call(doReg, "rrw 1");
    call(doReg, "rrl 3");
    call(doReg, "rrq 7");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegReadWord(0x1)", "vekRegReadLong(0x3)", "vekRegReadQuad(0x7)"));
}

TEST_F(SingleRegisterTest, SplitsAtBlanksCommasAndTabs)
{
    for (const char* text :
         {"rrb 10", "rrb,10", "rrb\t10", " ,\t\r\nrrb \t, 10 20", "rrb\r10", "rrb\n10", "RRB 10", "rRb 10\n"}) {
        EXPECT_EQ(call(doReg, text), (Outcome{0, "00000010: 00\n"})) << text;
    }
    // Behind the command word line ends are no delimiters any more: the address begins with one and is none.
    EXPECT_EQ(call(doReg, "rrb \n10"), (Outcome{0, "00000000: 00\n"}));
}

TEST_F(SingleRegisterTest, TurnsTheCallersTextIntoUpperCase)
{
    std::string text = "rwb ab,cd \xe4z{`";
    EXPECT_EQ(doReg(text.data(), 0), 0);
    EXPECT_EQ(text.substr(0, 3), "RWB");
    EXPECT_EQ(text.substr(4, 2), "AB");
    EXPECT_EQ(text.substr(7, 2), "CD");
    EXPECT_EQ(text.substr(10), "\xe4Z{`");
}

TEST_F(SingleRegisterTest, FailedReadsShowZeroAndAreNoError)
{
    registers().poke(0x10, kQuad);
    for (const char* text : {"rrb 10", "rrw 10", "rrl 10", "rrq 10"}) {
        call(doReg, text);
    }
    for (const char* function : {"vekRegReadByte", "vekRegReadWord", "vekRegReadLong", "vekRegReadQuad"}) {
        recording_vek::setResult(function, -5);
    }
    EXPECT_EQ(call(doReg, "rrb 10"), (Outcome{0, "00000010: 00\n"}));
    EXPECT_EQ(call(doReg, "rrw 10"), (Outcome{0, "00000010: 0000\n"}));
    EXPECT_EQ(call(doReg, "rrl 10"), (Outcome{0, "00000010: 00000000\n"}));
    EXPECT_EQ(call(doReg, "rrq 10"), (Outcome{0, "00000010: 00000000 00000000\n"}));
    EXPECT_EQ(call(doReg, "rrb 0", 1).output, "00000011: 00\n") << "a failed read is remembered as well";
}

TEST_F(SingleRegisterTest, RepeatedReadsGoOnBehindTheLastItem)
{
    call(doReg, "rrb 100");
    EXPECT_EQ(call(doReg, "rrb 100", 1).output, "00000101: 00\n");
    EXPECT_EQ(call(doReg, "rrw 100", 1).output, "00000103: 0000\n");
    EXPECT_EQ(call(doReg, "rrl 100", 1).output, "00000107: 00000000\n");
    EXPECT_EQ(call(doReg, "rrq 100", 1).output, "0000010f: 00000000 00000000\n");
    EXPECT_EQ(call(doReg, "rrq", 1).output, "00000117: 00000000 00000000\n");
}

TEST_F(SingleRegisterTest, AnyRepeatFlagButZeroGoesOn)
{
    call(doReg, "rrl 100");
    EXPECT_EQ(call(doReg, "rrl 500", 2).output, "00000104: 00000000\n");
    EXPECT_EQ(call(doReg, "rrl 500", -1).output, "00000108: 00000000\n");
    EXPECT_EQ(call(doReg, "rrl 500", 0).output, "00000500: 00000000\n");
}

TEST_F(SingleRegisterTest, RepeatedReadsWrapAtTheEndOfTheAddresses)
{
    call(doReg, "rrq ffffffffffffffff");
    EXPECT_EQ(call(doReg, "rrq", 1).output, "00000007: 00000000 00000000\n");
}

TEST_F(SingleRegisterTest, WritesStoreOneItemAndPrintNothing)
{
    EXPECT_EQ(call(doReg, "rwb 10 12"), Outcome{});
    EXPECT_EQ(call(doReg, "rww 20,0x1234"), Outcome{});
    EXPECT_EQ(call(doReg, "rwl 0x30 12345678"), Outcome{});
    EXPECT_EQ(call(doReg, "RWQ\tffff800000000040\t1122334455667788 9"), Outcome{});
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekRegWriteByte(0x10, 0x12)", "vekRegWriteWord(0x20, 0x1234)",
                                                    "vekRegWriteLong(0x30, 0x12345678)",
                                                    "vekRegWriteQuad(0xffff800000000040, 0x1122334455667788)"));
}

TEST_F(SingleRegisterTest, WritesCutTheDataToTheItem)
{
    call(doReg, "rwb 10 1ff");
    call(doReg, "rww 10 12345");
    call(doReg, "rwl 10 123456789");
    call(doReg, "rwq 10 11223344556677889");
    call(doReg, "rwb 10 zz");
    EXPECT_THAT(
        takeDeviceCalls(),
        ElementsAre("vekRegWriteByte(0x10, 0xff)", "vekRegWriteWord(0x10, 0x2345)", "vekRegWriteLong(0x10, 0x23456789)",
                    "vekRegWriteQuad(0x10, 0x1223344556677889)", "vekRegWriteByte(0x10, 0x0)"));
}

TEST_F(SingleRegisterTest, WritesMoveTheRememberedAddress)
{
    call(doReg, "rwb 20 5");
    EXPECT_EQ(call(doReg, "rrb", 1).output, "00000021: 00\n");
    call(doReg, "rwq 40 5");
    EXPECT_EQ(call(doReg, "rrl", 1).output, "00000044: 00000000\n");
    recording_vek::setResult("vekRegWriteLong", -5);
    EXPECT_EQ(call(doReg, "rwl 60 5"), Outcome{}) << "a failed write is no error";
    EXPECT_EQ(call(doReg, "rrb", 1).output, "00000061: 00\n");
}

TEST_F(SingleRegisterTest, WritesIgnoreTheRepeatFlag)
{
    call(doReg, "rrb 100");
    takeDeviceCalls();
    EXPECT_EQ(call(doReg, "rwb 10 5", 1), Outcome{});
    EXPECT_EQ(call(doReg, "rwl 20 6", 1), Outcome{});
    EXPECT_EQ(call(doReg, "rwl 20", 1), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegWriteByte(0x10, 0x5)", "vekRegWriteLong(0x20, 0x6)"));
}

TEST_F(SingleRegisterTest, WritesNeedAddressAndData)
{
    call(doReg, "rrb 100");
    takeDeviceCalls();
    for (const char* text : {"rwb", "rww", "rwl", "rwq", "rwb 10", "rww 10", "rwl 10", "rwq 10", "rwb 10 ,\t"}) {
        EXPECT_EQ(call(doReg, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
    EXPECT_EQ(call(doReg, "rrb", 1).output, "00000101: 00\n") << "the remembered address stays";
}

TEST_F(SingleRegisterTest, RefusesOtherWords)
{
    call(doReg, "rrb 100");
    takeDeviceCalls();
    for (const char* text : {"", " ", "rr 0", "rrx 0", "rrbs 0", "rwls 0 1 2", "rrbb 0", "vrb 0", "rb 0", "rw 1 2"}) {
        EXPECT_EQ(call(doReg, text), Outcome{-2}) << text;
        EXPECT_EQ(call(doReg, text, 1), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
    EXPECT_EQ(call(doReg, "rrb", 1).output, "00000101: 00\n") << "the remembered address stays";
}

TEST_F(SingleRegisterTest, EmptyLinesWalkForward)
{
    EXPECT_EQ(runLine("rrl 1000").output, "00001000: 00000000\n");
    EXPECT_EQ(runLine("").output, "00001004: 00000000\n");
    EXPECT_EQ(runLine("").output, "00001008: 00000000\n");
    EXPECT_EQ(runLine("").output, "0000100c: 00000000\n");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegReadLong(0x1000)", "vekRegReadLong(0x1004)",
                                               "vekRegReadLong(0x1008)", "vekRegReadLong(0x100c)"));
}

class RegisterRunTest : public FolderTest
{
};

TEST_F(RegisterRunTest, ByteRunIsDumped)
{
    registers().pokeBytes(0x1000, {0x41, 0x42, 0x00, 0x7f, 0xff});
    EXPECT_EQ(call(doMultReg, "rrbs 1000 5"), (Outcome{0, partLine("00001000", "41 42 00 7f ff", "AB...") + "\n"}));
    EXPECT_THAT(recording_vek::calls(),
                ElementsAre("vekRegReadByte(0x1000)", "vekRegReadByte(0x1001)", "vekRegReadByte(0x1002)",
                            "vekRegReadByte(0x1003)", "vekRegReadByte(0x1004)"));
}

TEST_F(RegisterRunTest, ByteRunIsDumpedInLinesOfSixteen)
{
    registers().pokeBytes(0x10, {0x21});
    EXPECT_EQ(call(doMultReg, "rrbs 0 10"), (Outcome{0, zeroLine("00000000") + "\n"}));
    EXPECT_EQ(call(doMultReg, "rrbs 0 11"),
              (Outcome{0, zeroLine("00000000") + partLine("00000010", "21", "!") + "\n"}));
    EXPECT_EQ(call(doMultReg, "rrbs 20 30"),
              (Outcome{0, zeroLine("00000020") + zeroLine("00000030") + zeroLine("00000040") + "\n"}));
}

TEST_F(RegisterRunTest, ByteRunLinesBeginAtTheFirstByte)
{
    registers().pokeBytes(0x15, {0x31, 0x32});
    EXPECT_EQ(call(doMultReg, "rrbs 5 12"),
              (Outcome{0, zeroLine("00000005") + partLine("00000015", "31 32", "12") + "\n"}));
}

// A full line must not show through in the next one.
TEST_F(RegisterRunTest, ShortLineShowsItsOwnBytesOnly)
{
    for (std::uint64_t address = 0; address < 19; ++address) {
        registers().poke(address, static_cast<std::uint8_t>(0x61 + address));
    }
    EXPECT_EQ(call(doMultReg, "rrbs 0 13"),
              (Outcome{0, "00000000: 61 62 63 64 65 66 67 68 69 6a 6b 6c 6d 6e 6f 70 \tabcdefghijklmnop\n" +
                              partLine("00000010", "71 72 73", "qrs") + "\n"}));
}

TEST_F(RegisterRunTest, WordRunHasEightItemsALine)
{
    registers().poke<std::uint16_t>(0x100, 0x1234);
    registers().poke<std::uint16_t>(0x110, 0xfedc);
    EXPECT_EQ(call(doMultReg, "rrws 100 9"),
              (Outcome{0, "00000100: 1234 0000 0000 0000 0000 0000 0000 0000\n00000110: fedc\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekRegReadWord(0x100)", "vekRegReadWord(0x102)", "vekRegReadWord(0x104)",
                            "vekRegReadWord(0x106)", "vekRegReadWord(0x108)", "vekRegReadWord(0x10a)",
                            "vekRegReadWord(0x10c)", "vekRegReadWord(0x10e)", "vekRegReadWord(0x110)"));
    EXPECT_EQ(call(doMultReg, "rrws 1 8").output, "00000001: 0000 0000 0000 0000 0000 0000 0000 0000\n");
}

TEST_F(RegisterRunTest, LongRunHasFourItemsALine)
{
    registers().poke<std::uint32_t>(0x100, 0x12345678);
    registers().poke<std::uint32_t>(0x110, 0xfedcba98);
    EXPECT_EQ(call(doMultReg, "rrls 100 5"),
              (Outcome{0, "00000100: 12345678 00000000 00000000 00000000\n00000110: fedcba98\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekRegReadLong(0x100)", "vekRegReadLong(0x104)", "vekRegReadLong(0x108)",
                            "vekRegReadLong(0x10c)", "vekRegReadLong(0x110)"));
    EXPECT_EQ(call(doMultReg, "rrls 2 4").output, "00000002: 00000000 00000000 00000000 00000000\n");
}

TEST_F(RegisterRunTest, QuadRunHasTwoItemsALineLowHalfFirst)
{
    registers().poke(0x100, kQuad);
    registers().poke<std::uint64_t>(0x110, 0xfedcba9876543210);
    EXPECT_EQ(call(doMultReg, "rrqs 100 3"),
              (Outcome{0, "00000100: 55667788 11223344 00000000 00000000\n00000110: 76543210 fedcba98\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekRegReadQuad(0x100)", "vekRegReadQuad(0x108)", "vekRegReadQuad(0x110)"));
    EXPECT_EQ(call(doMultReg, "rrqs 4 2").output, "00000004: 00000000 00000000 00000000 00000000\n");
}

TEST_F(RegisterRunTest, ReadsOneItemAtZeroWithoutArguments)
{
    call(doMultReg, "rrbs 40 8");
    EXPECT_EQ(call(doMultReg, "rrbs"), (Outcome{0, partLine("00000000", "00", ".") + "\n"}));
    EXPECT_EQ(call(doMultReg, "rrws"), (Outcome{0, "00000000: 0000\n"}));
    EXPECT_EQ(call(doMultReg, "rrls"), (Outcome{0, "00000000: 00000000\n"}));
    EXPECT_EQ(call(doMultReg, "rrqs ,"), (Outcome{0, "00000000: 00000000 00000000\n"}));
}

TEST_F(RegisterRunTest, ReadsOneItemWithoutACount)
{
    EXPECT_EQ(call(doMultReg, "rrbs 30"), (Outcome{0, partLine("00000030", "00", ".") + "\n"}));
    EXPECT_EQ(call(doMultReg, "rrqs 30\t"), (Outcome{0, "00000030: 00000000 00000000\n"}));
}

TEST_F(RegisterRunTest, EmptyRunsPrintTheClosingNewlineOnly)
{
    for (const char* text : {"rrbs 10 0", "rrws 10 0", "rrls 10 0", "rrqs 10 0", "rrbs 10 80000000", "rrws 10 ffffffff",
                             "rrls 10 ffffffff80000000", "rrqs 10 zz", "rrbs 10 100000000"}) {
        EXPECT_EQ(call(doMultReg, text), (Outcome{0, "\n"})) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

TEST_F(RegisterRunTest, CountsAreTheLowThirtyTwoBits)
{
    EXPECT_EQ(call(doMultReg, "rrws 10 f00000002"), (Outcome{0, "00000010: 0000 0000\n"}));
    EXPECT_EQ(call(doMultReg, "rwws 10 f00000001 5"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekRegReadWord(0x10)", "vekRegReadWord(0x12)", "vekRegWriteWord(0x10, 0x5)"));
}

TEST_F(RegisterRunTest, LongAddressesShowInFullButInDumps)
{
    EXPECT_EQ(call(doMultReg, "rrws ffff800000001000 1").output, "ffff800000001000: 0000\n");
    EXPECT_EQ(call(doMultReg, "rrls ffff800000001000 5").output,
              "ffff800000001000: 00000000 00000000 00000000 00000000\nffff800000001010: 00000000\n");
    EXPECT_EQ(call(doMultReg, "rrqs 100000000 1").output, "100000000: 00000000 00000000\n");
    EXPECT_EQ(call(doMultReg, "rrbs ffff800000001000 3").output,
              "ffff80000000 00 00 " + std::string(39, ' ') + "\t...\n\n");
}

TEST_F(RegisterRunTest, AddressesWrap)
{
    EXPECT_EQ(call(doMultReg, "rrls fffffffffffffffc 2").output, "fffffffffffffffc: 00000000 00000000\n");
    EXPECT_EQ(call(doMultReg, "rwbs ffffffffffffffff 2 1"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekRegReadLong(0xfffffffffffffffc)", "vekRegReadLong(0x0)",
                            "vekRegWriteByte(0xffffffffffffffff, 0x1)", "vekRegWriteByte(0x0, 0x1)"));
    EXPECT_EQ(call(doMultReg, "rrls 0 1", 1).output, "00000004: 00000000\n");
}

TEST_F(RegisterRunTest, FailedReadsShowZeroAndAreNoError)
{
    registers().pokeBytes(0, std::vector<std::uint8_t>(64, 0x55));
    recording_vek::setResultOnCall("vekRegReadByte", 2, -5);
    recording_vek::setResultOnCall("vekRegReadWord", 2, -5);
    recording_vek::setResultOnCall("vekRegReadLong", 2, -5);
    recording_vek::setResultOnCall("vekRegReadQuad", 2, -5);
    EXPECT_EQ(call(doMultReg, "rrbs 0 3"), (Outcome{0, partLine("00000000", "55 00 55", "U.U") + "\n"}));
    EXPECT_EQ(call(doMultReg, "rrws 0 3"), (Outcome{0, "00000000: 5555 0000 5555\n"}));
    EXPECT_EQ(call(doMultReg, "rrls 0 3"), (Outcome{0, "00000000: 55555555 00000000 55555555\n"}));
    EXPECT_EQ(call(doMultReg, "rrqs 0 3"),
              (Outcome{0, "00000000: 55555555 55555555 00000000 00000000\n00000010: 55555555 55555555\n"}));
}

TEST_F(RegisterRunTest, RepeatedRunsGoOnWhereTheLastEnded)
{
    call(doMultReg, "rrbs 1000 3");
    EXPECT_EQ(call(doMultReg, "rrws 77 2", 1).output, "00001003: 0000 0000\n");
    EXPECT_EQ(call(doMultReg, "rrls 77 1", 1).output, "00001007: 00000000\n");
    EXPECT_EQ(call(doMultReg, "rrqs 77 1", 1).output, "0000100b: 00000000 00000000\n");
    EXPECT_EQ(call(doMultReg, "rrws", 1).output, "00001013: 0000\n");
    EXPECT_EQ(call(doMultReg, "rrws", 1).output, "00001015: 0000\n");
}

TEST_F(RegisterRunTest, OnlyARepeatFlagOfOneGoesOn)
{
    call(doMultReg, "rrls 1000 1");
    EXPECT_EQ(call(doMultReg, "rrls 20 1", 2).output, "00000020: 00000000\n");
    call(doMultReg, "rrls 1000 1");
    EXPECT_EQ(call(doMultReg, "rrls 20 1", -1).output, "00000020: 00000000\n");
    EXPECT_EQ(call(doMultReg, "rrls 50 1", 1).output, "00000024: 00000000\n");
}

TEST_F(RegisterRunTest, EmptyRunsRememberTheirStart)
{
    call(doMultReg, "rrls 1000 4");
    call(doMultReg, "rrls 50 0");
    EXPECT_EQ(call(doMultReg, "rrls 77 1", 1).output, "00000050: 00000000\n");
    call(doMultReg, "rrqs 60 ffffffff");
    EXPECT_EQ(call(doMultReg, "rrls 77 1", 1).output, "00000060: 00000000\n");
    EXPECT_EQ(call(doMultReg, "rrls 77 0", 1).output, "\n");
    EXPECT_EQ(call(doMultReg, "rrls 77 1", 1).output, "00000064: 00000000\n");
}

TEST_F(RegisterRunTest, SingleAccessesAndRunsRememberOnTheirOwn)
{
    call(doReg, "rrl 100");
    call(doMultReg, "rrls 1000 4");
    EXPECT_EQ(call(doReg, "rrl", 1).output, "00000104: 00000000\n");
    EXPECT_EQ(call(doMultReg, "rrls", 1).output, "00001010: 00000000\n");
}

TEST_F(RegisterRunTest, EmptyLinesWalkForward)
{
    EXPECT_EQ(runLine("rrbs 1000 40").output,
              zeroLine("00001000") + zeroLine("00001010") + zeroLine("00001020") + zeroLine("00001030") + "\n");
    EXPECT_EQ(runLine("").output,
              zeroLine("00001040") + zeroLine("00001050") + zeroLine("00001060") + zeroLine("00001070") + "\n");
}

TEST_F(RegisterRunTest, ByteRunIsSavedAsItIs)
{
    std::string expected;
    for (int i = 0; i < 300; ++i) {
        const auto byte = static_cast<std::uint8_t>(i * 7);
        registers().poke(static_cast<std::uint64_t>(0x20 + i), byte);
        expected += static_cast<char>(byte);
    }
    const Outcome withoutFile = call(doMultReg, "rrbs 20 12c");
    EXPECT_EQ(call(doMultReg, "rrbs 20 12c out.bin"), withoutFile);
    EXPECT_EQ(readFile("OUT.BIN"), expected);
    EXPECT_FALSE(std::filesystem::exists("out.bin"));
}

TEST_F(RegisterRunTest, WiderRunsSaveOneZeroAnItem)
{
    registers().pokeBytes(0, std::vector<std::uint8_t>(256, 0x55));
    call(doMultReg, "rrbs 0 1 bytes");
    EXPECT_EQ(readFile("BYTES"), "U");
    EXPECT_EQ(call(doMultReg, "rrws 0 9 words,more"), call(doMultReg, "rrws 0 9"));
    EXPECT_EQ(call(doMultReg, "rrls 0 5 longs"), call(doMultReg, "rrls 0 5"));
    EXPECT_EQ(call(doMultReg, "rrqs 0 3 quads"), call(doMultReg, "rrqs 0 3"));
    EXPECT_EQ(readFile("WORDS"), std::string(9, '\0'));
    EXPECT_EQ(readFile("LONGS"), std::string(5, '\0'));
    EXPECT_EQ(readFile("QUADS"), std::string(3, '\0'));
}

TEST_F(RegisterRunTest, FailedReadsAreSavedAsZero)
{
    registers().pokeBytes(0, {0x55, 0x56, 0x57});
    recording_vek::setResultOnCall("vekRegReadByte", 2, -5);
    call(doMultReg, "rrbs 0 3 f");
    EXPECT_EQ(readFile("F"), bytes({0x55, 0, 0x57}));
}

TEST_F(RegisterRunTest, FileIsTruncated)
{
    writeFile("OUT.BIN", std::string(100, 'x'));
    call(doMultReg, "rrbs 0 3 out.bin");
    EXPECT_EQ(readFile("OUT.BIN"), std::string(3, '\0'));
    EXPECT_EQ(call(doMultReg, "rrbs 0 0 out.bin"), (Outcome{0, "\n"}));
    EXPECT_EQ(readFile("OUT.BIN"), "");
    writeFile("OUT.BIN", "x");
    EXPECT_EQ(call(doMultReg, "rrls 0 ffffffff out.bin"), (Outcome{0, "\n"}));
    EXPECT_EQ(readFile("OUT.BIN"), "");
}

TEST_F(RegisterRunTest, RepeatedRunRewritesItsFile)
{
    for (std::uint64_t address = 0; address < 0x30; ++address) {
        registers().poke(address, static_cast<std::uint8_t>(address));
    }
    runLine("rrbs 0 10 out.bin");
    EXPECT_EQ(readFile("OUT.BIN"), bytes({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
    runLine("");
    EXPECT_EQ(readFile("OUT.BIN"), bytes({16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31}));
}

TEST_F(RegisterRunTest, FileThatCannotBeCreatedStopsTheCommand)
{
    call(doMultReg, "rrls 1000 1");
    takeDeviceCalls();
    const Outcome expected{-1, "Open NO/SUCH/FOLDER.BIN error\n"};
    for (const char* word : {"rrbs", "rrws", "rrls", "rrqs"}) {
        EXPECT_EQ(call(doMultReg, word + std::string(" 0 4 no/such/folder.bin")), expected) << word;
        EXPECT_EQ(call(doMultReg, word + std::string(" 0 0 no/such/folder.bin"), 1), expected) << word;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
    EXPECT_EQ(call(doMultReg, "rrls 77 1", 1).output, "00001004: 00000000\n") << "the remembered address stays";
    EXPECT_EQ(runLine("rrbs 0 4 no/such/folder.bin"),
              (Outcome{-1, "Open NO/SUCH/FOLDER.BIN error\n" + std::string(kBadCommandLine)}));
}

TEST_F(RegisterRunTest, FolderIsRefused)
{
    ASSERT_TRUE(std::filesystem::create_directory("FOLDER"));
    EXPECT_EQ(call(doMultReg, "rrbs 0 4 folder"), (Outcome{-1, "Open FOLDER error\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

TEST_F(RegisterRunTest, PipeIsRefusedAndNotWaitedFor)
{
    ASSERT_EQ(mkfifo("PIPE", 0600), 0);
    const auto result = child_process::runForked(
        [] {
            const bool refused = call(doMultReg, "rrbs 0 4 pipe") == Outcome{-1, "Open PIPE error\n"};
            std::exit(refused ? 7 : 0);  // NOLINT(concurrency-mt-unsafe): one thread
        },
        std::chrono::seconds(20));
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.exitStatus, 7);
}

TEST_F(RegisterRunTest, ClosesItsFile)
{
    call(doMultReg, "rrbs 0 4 f");
    const std::ptrdiff_t open = countOpenDescriptors();
    call(doMultReg, "rrbs 0 4 f");
    call(doMultReg, "rrqs 0 0 f");
    EXPECT_EQ(countOpenDescriptors(), open);
}

TEST_F(RegisterRunTest, WritesFillARun)
{
    EXPECT_EQ(call(doMultReg, "rwbs 10 3 1ff"), Outcome{});
    EXPECT_EQ(call(doMultReg, "rwws 20,2,12345"), Outcome{});
    EXPECT_EQ(call(doMultReg, "rwls 1000 4 0"), Outcome{});
    EXPECT_EQ(call(doMultReg, "RWQS\t30\t2\t0x1122334455667788 extra"), Outcome{});
    EXPECT_EQ(call(doMultReg, "rwls 40 1 123456789"), Outcome{});
    EXPECT_THAT(
        recording_vek::calls(),
        ElementsAre("vekRegWriteByte(0x10, 0xff)", "vekRegWriteByte(0x11, 0xff)", "vekRegWriteByte(0x12, 0xff)",
                    "vekRegWriteWord(0x20, 0x2345)", "vekRegWriteWord(0x22, 0x2345)", "vekRegWriteLong(0x1000, 0x0)",
                    "vekRegWriteLong(0x1004, 0x0)", "vekRegWriteLong(0x1008, 0x0)", "vekRegWriteLong(0x100c, 0x0)",
                    "vekRegWriteQuad(0x30, 0x1122334455667788)", "vekRegWriteQuad(0x38, 0x1122334455667788)",
                    "vekRegWriteLong(0x40, 0x23456789)"));
}

TEST_F(RegisterRunTest, WritesNeedAddressCountAndValue)
{
    for (const std::string word : {"rwbs", "rwws", "rwls", "rwqs"}) {
        EXPECT_EQ(call(doMultReg, word), Outcome{-2});
        EXPECT_EQ(call(doMultReg, word + " 1000"), Outcome{-2});
        EXPECT_EQ(call(doMultReg, word + " 1000 4"), Outcome{-2});
        EXPECT_EQ(call(doMultReg, word + " 1000 4 ,", 1), Outcome{-2});
        EXPECT_EQ(call(doMultReg, word + " 1000 0"), Outcome{-2});
    }
    EXPECT_THAT(recording_vek::calls(), ElementsAre());
}

TEST_F(RegisterRunTest, EmptyWritesDoNothing)
{
    for (const char* text : {"rwbs 10 0 5", "rwws 10 80000000 5", "rwls 10 ffffffff 5", "rwqs 10 zz 5"}) {
        EXPECT_EQ(call(doMultReg, text), Outcome{}) << text;
    }
    EXPECT_THAT(recording_vek::calls(), ElementsAre());
}

TEST_F(RegisterRunTest, WritesLeaveTheRememberedAddressAlone)
{
    call(doMultReg, "rrls 1000 1");
    call(doMultReg, "rwbs 10 2 5");
    call(doMultReg, "rwqs 50 0 5");
    call(doMultReg, "rwqs 50");
    EXPECT_EQ(call(doMultReg, "rrls 77 1", 1).output, "00001004: 00000000\n");
}

TEST_F(RegisterRunTest, RepeatedWritesFillTheSameRunAgain)
{
    call(doMultReg, "rrls 1000 1");
    takeDeviceCalls();
    EXPECT_EQ(call(doMultReg, "rwws 10 2 5", 1), Outcome{});
    runLine("rwbs 20 1 6");
    runLine("");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegWriteWord(0x10, 0x5)", "vekRegWriteWord(0x12, 0x5)",
                                               "vekRegWriteByte(0x20, 0x6)", "vekRegWriteByte(0x20, 0x6)"));
}

TEST_F(RegisterRunTest, FailedWritesAreNoError)
{
    recording_vek::setResult("vekRegWriteByte", -5);
    EXPECT_EQ(call(doMultReg, "rwbs 10 2 5"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegWriteByte(0x10, 0x5)", "vekRegWriteByte(0x11, 0x5)"));
}

TEST_F(RegisterRunTest, RefusesOtherWords)
{
    call(doMultReg, "rrls 1000 1");
    takeDeviceCalls();
    for (const char* text : {"", " ", "rrb 0", "rwl 0 1", "rrs 0", "rrxs 0", "rrbss 0", "vrbs 0", "rws 1 2 3"}) {
        EXPECT_EQ(call(doMultReg, text), Outcome{-2}) << text;
        EXPECT_EQ(call(doMultReg, text, 1), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
    EXPECT_EQ(call(doMultReg, "rrls 77 1", 1).output, "00001004: 00000000\n") << "the remembered address stays";
}

TEST_F(RegisterRunTest, TurnsTheCallersTextIntoUpperCase)
{
    std::string text = "rwbs ab,1,cd ef";
    EXPECT_EQ(doMultReg(text.data(), 0), 0);
    EXPECT_EQ(text.substr(0, 4), "RWBS");
    EXPECT_EQ(text.substr(5, 2), "AB");
    EXPECT_EQ(text.substr(10, 2), "CD");
    EXPECT_EQ(text.substr(13), "EF");
}

}  // namespace
}  // namespace console_test
