// The memory commands of the finished program on its simulated cards.

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "finished_program.h"
#include "memory_support.h"

namespace memory_test
{
namespace
{

/** The bytes that a dump of bytes shows. Labels must not be longer than eight digits. */
std::string dumpedBytes(const std::string& output)
{
    std::string contents;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream digits(line.substr(std::min<std::size_t>(line.size(), 9), 49));
        for (std::string byte; digits >> byte;) {
            contents += static_cast<char>(std::stoul(byte, nullptr, 16));
        }
    }
    return contents;
}

class SimulatedCards : public FolderTest
{
};

TEST_F(SimulatedCards, VideoMemoryKeepsItemsOfEveryWidth)
{
    EXPECT_EQ(runProgram("vwq 11 1122334455667788;vrq 11;vrl 12;vrw 13;vrb 18;vwb 18 ff;vww 16 0;vwl 11 0;vrq 11"),
              "00000011: 55667788 11223344\n"
              "00000012: 44556677\n"
              "00000013: 5566\n"
              "00000018: 11\n"
              "00000011: 00000000 ff000044\n");
}

TEST_F(SimulatedCards, DumpAndFileOfVideoMemoryAgree)
{
    const std::string output =
        runProgram("vwqs 1000 10 8877665544332211;vwbs 1005 3 aa;vwws 1081 2 4142;vwls 1090 2 cafe;vrbs 1000 a3 d.bin");
    const std::string file = readFile("D.BIN");
    EXPECT_EQ(file.size(), 0xa3U);
    EXPECT_EQ(dumpedBytes(output), file);
    EXPECT_EQ(output, dump(0x1000, file) + "\n");
    EXPECT_EQ(file.substr(0, 9), bytes({0x11, 0x22, 0x33, 0x44, 0x55, 0xaa, 0xaa, 0xaa, 0x11}));
    EXPECT_EQ(file.substr(0x80, 6), bytes({0, 0x42, 0x41, 0x42, 0x41, 0}));
    EXPECT_EQ(file.substr(0x90, 9), bytes({0xfe, 0xca, 0, 0, 0xfe, 0xca, 0, 0, 0}));
}

TEST_F(SimulatedCards, FilesOfEveryWidthAgree)
{
    runProgram(
        "vwqs 1000 10 8877665544332211;vrbs 1000 80 b;vrws 1000 40 w;vrls 1000 20 l;vrqs 1000 10 q;"
        "arbs 40001000 80 ab;arws 40001000 40 aw;arls 40001000 20 al;arqs 40001000 10 aq");
    const std::string expected = readFile("B");
    EXPECT_EQ(expected.size(), 0x80U);
    EXPECT_EQ(expected.substr(0, 8), bytes({0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}));
    for (const char* name : {"W", "L", "Q", "ab", "aw", "al", "aq"}) {
        EXPECT_EQ(readFile(name), expected) << name;
    }
}

TEST_F(SimulatedCards, FileOfLongsComesBack)
{
    std::string contents;
    for (int i = 0; i < 0x100; ++i) {
        contents += static_cast<char>(i * 7);
    }
    writeFile("IN.BIN", contents);
    EXPECT_EQ(runProgram("vwls 2001 40 in.bin;vrls 2001 40 out.bin;vrl 2001;vrl 2101"),
              "00002001: 150e0700\n00002101: 00000000\n");
    EXPECT_EQ(readFile("OUT.BIN"), contents);
}

TEST_F(SimulatedCards, LongsAreDumpedByTheLibrary)
{
    const std::string output = runProgram("vwls 1000 6 44434241;vrls 1000 6");
    EXPECT_EQ(output.substr(0, 46), "00001000: 44434241 44434241 44434241 44434241 ");
    EXPECT_NE(output.find("00001010: 44434241 44434241"), std::string::npos);
    EXPECT_TRUE(output.ends_with("\n\n"));
    EXPECT_EQ(runProgram("vwls 1000 4 0x5;vrl 1000"), "00001000: 00000000\n") << "there is no file 0X5";
}

TEST_F(SimulatedCards, RegistersAnswerOnTheAmbaBus)
{
    EXPECT_EQ(runProgram("rwl 104 12345678;arl 1000104;arb 1000106;awl 1000108 9abcdef0;rrl 108;rrq 104"),
              "01000104: 12345678\n"
              "01000106: 34\n"
              "00000108: 9abcdef0\n"
              "00000104: 12345678 9abcdef0\n");
    EXPECT_EQ(runProgram("rwqs 200 4 1122334455667788;arls 1000200 8;awws 1000200 2 ffff;rrws 200 5"),
              "01000200: 55667788 11223344 55667788 11223344\n"
              "01000210: 55667788 11223344 55667788 11223344\n"
              "00000200: ffff ffff 3344 1122 7788\n");
    EXPECT_EQ(runProgram("rwb ffffff a5;arb 1ffffff"), "01ffffff: a5\n") << "the last register";
}

TEST_F(SimulatedCards, FileOfRegistersHoldsTheBytesShown)
{
    const std::string output = runProgram("awqs 1000300 4 8070605040302010;rrbs 300 25 r.bin;arbs 1000300 25 a.bin");
    const std::string file = readFile("R.BIN");
    EXPECT_EQ(output, dump(0x300, file) + "\n" + dump(0x1000300, file) + "\n");
    EXPECT_EQ(readFile("a.bin"), file);
    EXPECT_EQ(file.substr(0x18), bytes({0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70, 0x80, 0, 0, 0, 0, 0}));
}

TEST_F(SimulatedCards, VideoMemoryAnswersOnTheAmbaBus)
{
    EXPECT_EQ(runProgram("vwq 10 1122334455667788;arq 40000010;awb 40000010 ff;vrb 10;awq 7ffffff8 5;vrq 3ffffff8"),
              "40000010: 55667788 11223344\n"
              "00000010: ff\n"
              "3ffffff8: 00000005 00000000\n");
    EXPECT_EQ(runProgram("vwl 40000000 5;arl 80000000;arw 7fffffff"), "80000000: ffffffff\n7fffffff: ffff\n")
        << "the window is one gibibyte";
}

TEST_F(SimulatedCards, BoardRamAnswersOnTheAmbaBusOnly)
{
    EXPECT_EQ(runProgram("awls 20000000 2 5;arl 20000004;awb 200fffff 7;arb 200fffff;arb 20100000;rrl 4;vrl 4"),
              "20000004: 00000005\n"
              "200fffff: 07\n"
              "20100000: ff\n"
              "00000004: 00000000\n"
              "00000004: 00000000\n");
    EXPECT_EQ(runProgram("arq 0;arw 1fffffff"), "00000000: ffffffff ffffffff\n1fffffff: ffff\n");
}

TEST_F(SimulatedCards, VideoMemoryEndsWithTheCard)
{
    EXPECT_EQ(runProgram("vwl fffffffc 5;vrl fffffffc;vrl fffffffd;vrb 100000000", Card::kQz201),
              "fffffffc: 00000005\nfffffffd: ffffffff\n100000000: ff\n");
    EXPECT_EQ(runProgram("vwl 7ffffffc 5;vrl 7ffffffc;vrl 7ffffffd;vrb 80000000", Card::kQz202),
              "7ffffffc: 00000005\n7ffffffd: ffffffff\n80000000: ff\n");
    EXPECT_EQ(runProgram("vrws fffffffe 2 f"), "fffffffe: 0000 ffff\n");
    EXPECT_EQ(readFile("F"), bytes({0, 0, 0xff, 0xff}));
}

TEST_F(SimulatedCards, KernelMemoryKeepsWhatIsWritten)
{
    EXPECT_EQ(runProgram("kwls ffff888000001ffe 3 11223344;krws ffff888000001ffc 8;krq ffff888000001ffe;"
                         "kwb ffff888000001fff 2a;krbs ffff888000001fff"),
              "ffff888000001ffc: 0000 3344 1122 3344 1122 3344 1122 0000\n"
              "ffff888000001ffe: 11223344 11223344\n"
              "ffff8880002a  ff: \t*\n\n");
    EXPECT_EQ(runProgram("krl 0"), "0000000000000000: ffffffff\n") << "no kernel address";
}

TEST_F(SimulatedCards, FamiliesHaveMemoriesOfTheirOwn)
{
    EXPECT_EQ(runProgram("rwl 1000 1;vwl 1000 2;awl 20001000 3;cwb 10 4;rrl 1000;vrl 1000;arl 20001000;crb 10"),
              "00001000: 00000001\n00001000: 00000002\n20001000: 00000003\nCRTC0 10: 04\n");
}

TEST_F(SimulatedCards, CrtcRegistersAreSaved)
{
    const std::string output = runProgram("cwb 0 11;cwb 1 41;cwb 1f 1fe;crb 1f;crbs 0 20 c.bin");
    const std::string file = readFile("C.BIN");
    EXPECT_EQ(output, "CRTC0 1f: fe\n" + dump(0, file) + "\n");
    EXPECT_EQ(file.substr(0, 3), bytes({0x11, 0x41, 0}));
    EXPECT_EQ(file.substr(0x1f), bytes({0xfe}));
}

TEST_F(SimulatedCards, RefusedCommandsChangeNothing)
{
    EXPECT_EQ(runProgram("vwl 10 5;vwl 10;vrl 10"), console_test::kBadArgumentLine);
    EXPECT_EQ(runProgram("crbs 0 4 no/such/f;crb 0"),
              "Open NO/SUCH/F error\n" + std::string(console_test::kBadCommandLine));
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

}  // namespace
}  // namespace memory_test
