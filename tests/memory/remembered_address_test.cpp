// Every handler remembers an address of its own.

#include <string>
#include <vector>

#include "memory_support.h"

namespace memory_test
{
namespace
{

class RememberedAddresses : public ConsoleTest
{
};

/** A handler, the command that makes it remember an address, and what a repeated read then prints. */
struct Case {
    CmdHandler handler;
    std::string first;
    std::string repeated;
    std::string expected;
};

const std::vector<Case>& handlers()
{
    static const std::vector<Case> all{
        {doReg, "rrl 1000", "rrl", "00001004: 00000000\n"},
        {doMultReg, "rrls 2000 2", "rrls", "00002008: 00000000\n"},
        {doVram, "vrl 3000", "vrl", "00003004: 00000000\n"},
        {doMultVram, "vrws 4000 2", "vrws", "00004004: 0000\n"},
        {doKmem, "krl 5000", "krl", "0000000000005004: 00000000\n"},
        {doMultKmem, "krls 6000 2", "krls", "0000000000006008: 00000000\n"},
        {doAmba, "arl 7000", "arl", "00007004: 00000000\n"},
        {doMultAmba, "arls 8000 2", "arls", "00008008: 00000000\n"},
        {doCrtcReg, "crb 90", "crb", "CRTC0 91: 00\n"},
    };
    return all;
}

TEST_F(RememberedAddresses, AreIndependentOfEachOther)
{
    for (const Case& each : handlers()) {
        call(each.handler, each.first);
    }
    for (const Case& each : handlers()) {
        EXPECT_EQ(call(each.handler, each.repeated, 1), (Outcome{0, each.expected})) << each.first;
    }
}

TEST_F(RememberedAddresses, AreLeftAloneByPci)
{
    for (const Case& each : handlers()) {
        call(each.handler, each.first);
    }
    call(doPCI, "pci 10");
    call(doPCI, "pci 10 20", 1);
    for (const Case& each : handlers()) {
        EXPECT_EQ(call(each.handler, each.repeated, 1), (Outcome{0, each.expected})) << each.first;
    }
}

TEST_F(RememberedAddresses, AreIndependentForWrites)
{
    for (const Case& each : handlers()) {
        call(each.handler, each.first);
    }
    call(doKmem, "kwl a000 1");
    call(doAmba, "awl b000 1");
    call(doMultVram, "vwbs c000 1 1");
    EXPECT_EQ(call(doMultKmem, "krls", 1).output, "0000000000006008: 00000000\n");
    EXPECT_EQ(call(doMultAmba, "arls", 1).output, "00008008: 00000000\n");
    EXPECT_EQ(call(doVram, "vrl", 1).output, "00003004: 00000000\n");
    call(doMultKmem, "kwls d000 1 1");
    call(doMultAmba, "awls e000 1 1");
    EXPECT_EQ(call(doKmem, "krl", 1).output, "000000000000a004: 00000000\n");
    EXPECT_EQ(call(doAmba, "arl", 1).output, "0000b004: 00000000\n");
    EXPECT_EQ(call(doReg, "rrl", 1).output, "00001004: 00000000\n");
    EXPECT_EQ(call(doMultReg, "rrls", 1).output, "00002008: 00000000\n");
}

// Whatever else was run, an empty line goes on where the last command of the same handler ended.
TEST_F(RememberedAddresses, SurviveOtherCommands)
{
    runLine("vrws 4000 2");
    runLine("krl 5000");
    runLine("arl 7000");
    EXPECT_EQ(runLine("").output, "00007004: 00000000\n");
    EXPECT_EQ(call(doMultVram, "vrws 9 1", 1).output, "00004004: 0000\n");
    EXPECT_EQ(call(doKmem, "krb 9", 1).output, "0000000000005001: 00\n");
}

}  // namespace
}  // namespace memory_test
