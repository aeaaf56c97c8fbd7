// Single reads and writes of video memory, kernel memory and the AMBA bus.

#include <cctype>
#include <string>
#include <vector>

#include "memory_support.h"

namespace memory_test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint64_t kValue = 0xfedcba9811223344;

/** Every command word of the three families, lower case. */
Lines allWords()
{
    Lines words;
    for (const Commands& each : allCommands()) {
        for (const std::string& word : {each.read(), each.write(), each.readRun(), each.writeRun()}) {
            words.push_back(word.substr(0, word.find(' ')));
        }
    }
    return words;
}

class SingleAccess : public ConsoleTest, public ::testing::WithParamInterface<Commands>
{
protected:
    Outcome enter(const std::string& text, int repeat = 0) const { return call(it.family.single, text, repeat); }

    /** Runs a command whose calls and output do not matter. */
    void prepare(const std::string& text) const
    {
        enter(text);
        takeDeviceCalls();
    }

    /** The outcome of reading an item that holds zero. */
    Outcome zeroAt(std::uint64_t address) const { return {0, it.item(address, 0)}; }

    const Commands it = GetParam();
    const std::uint64_t base = it.family.base;
};

INSTANTIATE_TEST_SUITE_P(Memory, SingleAccess, ::testing::ValuesIn(allCommands()), commandsName);

TEST_P(SingleAccess, ReadPrintsTheItem)
{
    it.family.memory().poke(base + 0x10, kValue);
    EXPECT_EQ(enter(it.read() + hex(base + 0x10)), (Outcome{0, it.item(base + 0x10, it.truncated(kValue))}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.readCall(base + 0x10)));
}

TEST_P(SingleAccess, ReadTakesAddressZeroWithoutAnArgument)
{
    prepare(it.read() + hex(base));
    EXPECT_EQ(enter(it.read()), zeroAt(0));
    EXPECT_EQ(enter(it.read() + ",\t "), zeroAt(0));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.readCall(0), it.readCall(0)));
}

TEST_P(SingleAccess, AddressesAreHexadecimalAndSixtyFourBitsWide)
{
    EXPECT_EQ(enter(it.read() + "0x1aB"), zeroAt(0x1ab));
    EXPECT_EQ(enter(it.read() + "0X1aB"), zeroAt(0x1ab));
    EXPECT_EQ(enter(it.read() + "12g4"), zeroAt(0x12));
    EXPECT_EQ(enter(it.read() + "-5"), zeroAt(0));
    EXPECT_EQ(enter(it.read() + "123456789"), zeroAt(0x123456789));
    EXPECT_EQ(enter(it.read() + "ffff800000001001"), zeroAt(0xffff800000001001));
    EXPECT_EQ(enter(it.read() + "11223344556677889"), zeroAt(0x1223344556677889));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.readCall(0x1ab), it.readCall(0x1ab), it.readCall(0x12),
                                               it.readCall(0), it.readCall(0x123456789),
                                               it.readCall(0xffff800000001001), it.readCall(0x1223344556677889)));
}

TEST_P(SingleAccess, SplitsAtBlanksCommasAndTabs)
{
    const std::string word = it.read().substr(0, 3);
    for (const std::string& text :
         {word + ",10", word + "\t10", " ,\t\r\n" + word + " \t, 10 20", word + "\r10", word + "\n10,30"}) {
        EXPECT_EQ(enter(text), zeroAt(0x10)) << text;
    }
    // Behind the command word line ends are part of an argument.
    EXPECT_EQ(enter(word + " \n10"), zeroAt(0));
}

TEST_P(SingleAccess, LettersMayBeOfEitherCase)
{
    std::string upper = it.read();
    for (char& letter : upper) {
        letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    }
    EXPECT_EQ(enter(upper + "10"), zeroAt(0x10));
    EXPECT_EQ(enter(upper.substr(0, 1) + it.read().substr(1) + "10"), zeroAt(0x10));
}

TEST_P(SingleAccess, TurnsTheCallersTextIntoUpperCase)
{
    std::string text = it.write() + "ab,cd \xe4z{`";
    EXPECT_EQ(it.family.single(text.data(), 0), 0);
    EXPECT_EQ(text.substr(4, 2), "AB");
    EXPECT_EQ(text.substr(7, 2), "CD");
    EXPECT_EQ(text.substr(10), "\xe4Z{`");
}

TEST_P(SingleAccess, FailedReadShowsZeroAndIsRemembered)
{
    it.family.memory().poke(base, ~std::uint64_t{0});
    enter(it.read() + hex(base));
    recording_vek::setResult(it.readFunction(), -5);
    EXPECT_EQ(enter(it.read() + hex(base)), zeroAt(base));
    EXPECT_EQ(enter(it.read(), 1), zeroAt(base + it.width.size));
}

TEST_P(SingleAccess, RepeatedReadGoesOnBehindTheLastItem)
{
    prepare(it.read() + hex(base));
    const std::uint64_t size = it.width.size;
    EXPECT_EQ(enter(it.read() + "500", 1), zeroAt(base + size));
    EXPECT_EQ(enter(it.read(), 1), zeroAt(base + 2 * size));
    EXPECT_EQ(enter(it.read() + "500", 1), zeroAt(base + 3 * size));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre(it.readCall(base + size), it.readCall(base + 2 * size), it.readCall(base + 3 * size)));
}

// The step is the size of the item that is read, not of the one before.
TEST_P(SingleAccess, RepeatedReadStepsByItsOwnSize)
{
    std::uint64_t address = base;
    prepare(it.read() + hex(base));
    for (const Width& width : {kQuad, kByte, kLong, kWord, kQuad}) {
        const Commands other{it.family, width};
        address += width.size;
        EXPECT_EQ(enter(other.read() + "500", 1), (Outcome{0, other.item(address, 0)}));
    }
}

TEST_P(SingleAccess, RepeatedReadWrapsAtTheEndOfTheAddresses)
{
    prepare(it.read() + "ffffffffffffffff");
    EXPECT_EQ(enter(it.read(), 1), zeroAt(it.width.size - 1));
}

// On the AMBA bus, as in the register region, any repeat flag but 0 goes on; elsewhere only 1 does.
TEST_P(SingleAccess, OtherRepeatFlags)
{
    const bool anyFlag = it.family.letter == kAmba.letter;
    for (const int repeat : {2, -1, 256}) {
        prepare(it.read() + hex(base));
        EXPECT_EQ(enter(it.read() + "500", repeat), zeroAt(anyFlag ? base + it.width.size : 0x500)) << repeat;
        EXPECT_EQ(enter(it.read() + "700"), zeroAt(0x700));
    }
}

TEST_P(SingleAccess, WriteStoresOneItemAndPrintsNothing)
{
    EXPECT_EQ(enter(it.write() + hex(base) + " 12"), Outcome{});
    EXPECT_EQ(enter(it.write() + "0xffff800000000041,0x34 56"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.writeCall(base, 0x12), it.writeCall(0xffff800000000041, 0x34)));
}

TEST_P(SingleAccess, WriteTruncatesTheDataToTheItem)
{
    EXPECT_EQ(enter(it.write() + "10 " + hex(kValue)), Outcome{});
    EXPECT_EQ(enter(it.write() + "10 111223344556677ff"), Outcome{});
    EXPECT_EQ(enter(it.write() + "10 zz"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre(it.writeCall(0x10, it.truncated(kValue)),
                            it.writeCall(0x10, it.truncated(0x11223344556677ff)), it.writeCall(0x10, 0)));
}

TEST_P(SingleAccess, WriteIgnoresTheRepeatFlag)
{
    prepare(it.read() + hex(base));
    for (const int repeat : {1, 2, -1}) {
        EXPECT_EQ(enter(it.write() + "10 5", repeat), Outcome{});
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.writeCall(0x10, 5)));
        EXPECT_EQ(enter(it.write() + "10", repeat), Outcome{-2});
        EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    }
}

TEST_P(SingleAccess, WriteNeedsAddressAndData)
{
    prepare(it.read() + hex(base));
    for (const std::string& text : {it.write(), it.write() + "10", it.write() + "10 ,\t", it.write() + ",,"}) {
        EXPECT_EQ(enter(text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(enter(it.read(), 1), zeroAt(base + it.width.size)) << "the remembered address stays";
}

TEST_P(SingleAccess, MissingDataIsReportedByTheConsole)
{
    EXPECT_EQ(runLine(it.write() + "10"), (Outcome{-2, std::string(console_test::kBadArgumentLine)}));
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

// Writes move the remembered address, except those of video memory.
TEST_P(SingleAccess, WriteAndTheRememberedAddress)
{
    const bool moves = it.family.letter != kVideo.letter;
    prepare(it.read() + hex(base));
    EXPECT_EQ(enter(it.write() + "200 5"), Outcome{});
    EXPECT_EQ(enter(it.read(), 1), zeroAt((moves ? 0x200 : base) + it.width.size));
}

TEST_P(SingleAccess, FailedWriteIsNoError)
{
    const bool moves = it.family.letter != kVideo.letter;
    prepare(it.read() + hex(base));
    recording_vek::setResult(it.writeFunction(), -5);
    EXPECT_EQ(enter(it.write() + "200 5"), Outcome{});
    EXPECT_EQ(enter(it.read(), 1), zeroAt((moves ? 0x200 : base) + it.width.size));
}

TEST_P(SingleAccess, RefusesOtherWords)
{
    prepare(it.read() + hex(base));
    Lines words = allWords();
    std::erase_if(words, [&](const std::string& word) { return word.size() == 3 && word[0] == it.family.letter; });
    words.insert(words.end(), {"", " ", ",\t\r\n", "vr", "krx", "arb.", "vrbb", "rrb", "crb", "kw", "awlx"});
    for (const std::string& word : words) {
        for (const int repeat : {0, 1}) {
            EXPECT_EQ(enter(word + " 0 1 2", repeat), Outcome{-2}) << word;
        }
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(enter(it.read(), 1), zeroAt(base + it.width.size)) << "the remembered address stays";
}

TEST_P(SingleAccess, EmptyLinesRepeatReadsOnly)
{
    EXPECT_EQ(runLine(it.read() + hex(base)), zeroAt(base));
    EXPECT_EQ(runLine(""), zeroAt(base + it.width.size));
    EXPECT_EQ(runLine(""), zeroAt(base + 2 * it.width.size));
    takeDeviceCalls();
    EXPECT_EQ(runLine(it.write() + hex(base) + " 5"), Outcome{});
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.writeCall(base, 5)));
}

// The very bytes of the output, not put together by the test.
TEST(SingleAccessOutput, IsLiterally)
{
    recording_vek::reset();
    recording_vek::videoMemory().poke<std::uint64_t>(0x10, 0x1122334455667788);
    EXPECT_EQ(call(doVram, "vrb 10").output, "00000010: 88\n");
    EXPECT_EQ(call(doVram, "vrw 10").output, "00000010: 7788\n");
    EXPECT_EQ(call(doVram, "vrl 10").output, "00000010: 55667788\n");
    EXPECT_EQ(call(doVram, "vrq 10").output, "00000010: 55667788 11223344\n");
    EXPECT_EQ(call(doVram, "vrb 123456789").output, "123456789: 00\n");
    recording_vek::kernelMemory().poke<std::uint64_t>(0xffff888000001000, 0x1122334455667788);
    EXPECT_EQ(call(doKmem, "krb ffff888000001000").output, "ffff888000001000: 88\n");
    EXPECT_EQ(call(doKmem, "krw ffff888000001000").output, "ffff888000001000: 7788\n");
    EXPECT_EQ(call(doKmem, "krl ffff888000001000").output, "ffff888000001000: 55667788\n");
    EXPECT_EQ(call(doKmem, "krq ffff888000001000").output, "ffff888000001000: 55667788 11223344\n");
    EXPECT_EQ(call(doKmem, "krb 10").output, "0000000000000010: 00\n");
    recording_vek::ambaBus().poke<std::uint64_t>(0x10, 0x0000000200000001);
    EXPECT_EQ(call(doAmba, "arb 10").output, "00000010: 01\n");
    EXPECT_EQ(call(doAmba, "arw 10").output, "00000010: 0001\n");
    EXPECT_EQ(call(doAmba, "arl 10").output, "00000010: 00000001\n");
    EXPECT_EQ(call(doAmba, "arq 10").output, "00000010: 00000001 00000002\n");
}

TEST(SingleAccessOutput, FollowsTheExamples)
{
    recording_vek::reset();
    call(doVram, "vrw 100");
    EXPECT_EQ(call(doVram, "vrw 500", 1).output, "00000102: 0000\n");
    call(doKmem, "kwl ffff888000001000 5");
    EXPECT_EQ(call(doKmem, "krl 0", 1).output, "ffff888000001004: 00000000\n");
    call(doAmba, "arw 100");
    EXPECT_EQ(call(doAmba, "arw 500", 7).output, "00000102: 0000\n");
}

}  // namespace
}  // namespace memory_test
