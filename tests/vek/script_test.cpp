#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>

#include "captured_output.h"
#include "open_card.h"
#include "scratch_folder.h"
#include "vek.h"

namespace
{

constexpr int kInvalid = -2;
constexpr int kFailed = -5;

uint32_t longAt(uint64_t address)
{
    uint32_t value = 0;
    EXPECT_EQ(vekRegReadLong(address, &value), 0);
    return value;
}

class Script : public FirstCard
{
protected:
    int run(const std::string& text)
    {
        name_ = folder_.write("script", text);
        return runFile(name_.c_str());
    }

    int runFile(const char* name)
    {
        CapturedOutput output;
        CapturedError error;
        const int result = vekRunScript(name);
        output_ = output.take();
        error_ = error.take();
        return result;
    }

    /** Runs a script that must be refused for what is wrong with its given line. */
    void expectRefused(const std::string& text, unsigned line)
    {
        ASSERT_EQ(vekRegWriteLong(0x3000, 0x600d), 0);
        EXPECT_EQ(run(text), kInvalid) << text;
        EXPECT_EQ(error_.find(name_ + ":" + std::to_string(line) + ": "), 0U) << error_;
        EXPECT_EQ(std::count(error_.begin(), error_.end(), '\n'), 1) << error_;
        EXPECT_EQ(output_, "") << text;
        EXPECT_EQ(longAt(0x3000), 0x600dU) << text;
    }

    ScratchFolder folder_;
    std::string name_;
    std::string output_;
    std::string error_;
};

TEST_F(Script, WritesAndPrintsItemsOfEveryWidth)
{
    EXPECT_EQ(run("rwq 1000 8877665544332211\n"
                  "rrb 1000\nrrw 1000\nrrl 1000\nrrq 1000\n"
                  "rwl 1000 1\nrww 1004 2\nrwb 1006 3\nrrq 1000\n"),
              0);
    EXPECT_EQ(output_,
              "00001000: 11\n"
              "00001000: 2211\n"
              "00001000: 44332211\n"
              "00001000: 8877665544332211\n"
              "00001000: 8803000200000001\n");
    EXPECT_EQ(error_, "");
}

TEST_F(Script, TakesCommentsBlanksCasesAndLineEndsAsTheyCome)
{
    EXPECT_EQ(run("# comment\r\n\r\n   \t\n  RWL,0x2000\t0XaBcD # more\r\nrrl 2000#\nwait 0\nRrW 00000002000"), 0);
    EXPECT_EQ(output_, "00002000: 0000abcd\n00002000: abcd\n");
    EXPECT_EQ(run(""), 0);
    EXPECT_EQ(run("#"), 0);
}

TEST_F(Script, ChecksUnderAMask)
{
    EXPECT_EQ(run("rwl 2100 12345678\n"
                  "ckl 2100 12345678\nckl 2100 5600 ff00\nckb 2101 56\nckw 2102 1234\nckq 2100 78 ff\n"
                  "wul 2100 5600 ff00 0\n"),
              0);
    EXPECT_EQ(error_, "");
}

TEST_F(Script, StopsAtTheFirstCheckThatDoesNotHold)
{
    EXPECT_EQ(run("rwl 2200 12345678\nrrb 2200\n\nckl 2200 45700 fff00\nrwl 2200 0\n"), kFailed);
    EXPECT_EQ(output_, "00002200: 78\n");
    EXPECT_EQ(error_, name_ + ":4: 00002200: expected 00045700 under mask 000fff00, read 12345678\n");
    EXPECT_EQ(longAt(0x2200), 0x12345678U);
}

TEST_F(Script, StopsAtAnAccessWithoutAnAnswer)
{
    EXPECT_EQ(run("rrw 1000000\nrwl 2300 1\n"), kFailed);
    EXPECT_EQ(error_, name_ + ":1: 01000000: expected an answer, read ffff (result -6)\n");
    EXPECT_EQ(output_, "");
    EXPECT_EQ(longAt(0x2300), 0U);
    EXPECT_EQ(run("\nrwl fffffe 12\n"), kFailed);
    EXPECT_EQ(error_.find(name_ + ":2: 00fffffe: expected to write 00000012"), 0U) << error_;
    EXPECT_EQ(run("ckb ffffffffffffffff ff\n"), kFailed);
    EXPECT_EQ(error_, name_ + ":1: ffffffffffffffff: expected an answer, read ff (result -6)\n");
}

TEST_F(Script, WaitsForTheTimeGiven)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(run("wait 1e\n"), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

TEST_F(Script, GivesAWaitUpWhenItsTimeIsOver)
{
    ASSERT_EQ(vekRegWriteLong(0x2400, 2), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(run("wul 2400 1 1 1e\n"), kFailed);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
    EXPECT_EQ(error_, name_ + ":1: 00002400: expected 00000001 under mask 00000001, read 00000002\n");
}

TEST_F(Script, TouchesNothingWhenALineIsBad)
{
    const std::string good = "rwl 3000 1\nrrl 3000\n";
    for (const char* bad : {"frob 0",
                            "rrl",
                            "rrl g",
                            "rrl 0x",
                            "rrl -1",
                            "rrl 1 2",
                            "rwl 0",
                            "rwl 0 x",
                            "rwl 0 1 2",
                            "rwb 0 100",
                            "rww 0 10000",
                            "rwl 0 100000000",
                            "rwq 0 10000000000000000",
                            "rrl 10000000000000000",
                            "ckl 0",
                            "ckl 0 1 0",
                            "ckl 0 3 1",
                            "ckb 0 1 100",
                            "ckl 0 1 1 1",
                            "wul 0 1 1",
                            "wul 0 1",
                            "wul 0 1 1 2711",
                            "wul 0 1 1 1 1",
                            "wait",
                            "wait 2711",
                            "wait x",
                            "wait 1 1",
                            "rrl 0; rrl 4",
                            "rrl\v0",
                            "\xff"}) {
        expectRefused(good + bad + "\n", 3);
        expectRefused(good + bad, 3);
        expectRefused(std::string(bad) + "\n" + good, 1);
    }
}

TEST_F(Script, RefusesNulBytesAndOverlongLines)
{
    expectRefused(std::string("rwl 3000 1\nrrl 0\0\n", 19), 2);
    expectRefused(std::string("\0", 1), 1);
    expectRefused(std::string("rwl 3000 1\n# \0\n", 15), 2);
    EXPECT_EQ(run("#" + std::string(254, 'x') + "\n"), 0);
    expectRefused("rwl 3000 1\n#" + std::string(255, 'x') + "\n", 2);
    expectRefused("rwl 3000 1\n" + std::string(100000, ' '), 2);
}

TEST_F(Script, RefusesScriptsThatAreTooLarge)
{
    std::string text;
    while (text.size() < (1 << 20)) {
        text += "# 13 bytes ..\n";
    }
    text.resize(1 << 20);
    EXPECT_EQ(run(text), 0);
    EXPECT_EQ(run(text + "\n"), kInvalid);
    EXPECT_EQ(error_.find(name_ + ": "), 0U) << error_;
}

TEST_F(Script, RefusesWhatIsNoReadableFile)
{
    const std::string fifo = folder_.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    // A writer that never writes must not hold the console up either.
    const int writer = open(fifo.c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(writer, 0);
    for (const std::string& name : {folder_.path("absent"), folder_.path(""), fifo, std::string("/dev/zero")}) {
        EXPECT_EQ(runFile(name.c_str()), kInvalid) << name;
        EXPECT_EQ(error_.find(name + ": "), 0U) << error_;
        EXPECT_EQ(std::count(error_.begin(), error_.end(), '\n'), 1) << error_;
    }
    close(writer);
    EXPECT_EQ(runFile(""), kInvalid);
    EXPECT_EQ(runFile(nullptr), kInvalid);
    EXPECT_EQ(std::count(error_.begin(), error_.end(), '\n'), 1) << error_;
}

TEST_F(Script, NeedsAnOpenCard)
{
    vekClose();
    EXPECT_EQ(run("rwl 0 1\n"), VEK_NO_PATH);
}

}  // namespace
