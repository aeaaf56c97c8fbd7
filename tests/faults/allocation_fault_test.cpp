// Every allocation that a command makes fails, one after the other.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <string>

#include "child_process.h"
#include "command_lines.h"
#include "console_support.h"
#include "observation.h"
#include "tovira_parse/handlers.h"
#include "vek.h"

namespace faults_test
{
namespace
{

using Files = std::map<std::string, std::string>;

/** The files in the current folder, with what they hold. */
Files filesHere()
{
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        files[entry.path().filename()] = console_test::readFile(entry.path());
    }
    return files;
}

/** What a command says and returns when there is no memory for it. */
struct WithoutMemory {
    int status;
    std::string output;
    std::string error{};
};

const std::map<CmdHandler, WithoutMemory>& documented()
{
    static const std::map<CmdHandler, WithoutMemory> table = {
        {doLoad, {kStatusQuit, "", "Malloc buf failed: Cannot allocate memory\n"}},
        {doMultVram, {kStatusDone, "", "Out of memory\n"}},
        {doMultAmba, {kStatusDone, "", "Out of memory\n"}},
        {doDp, {kStatusBadCommand, "Out of memory\n"}},
        {doSpi, {kStatusBadCommand, "Out of memory\n"}},
        {doVer, {kStatusDone, "Driver version 1.2.3.4\nfail to alloc gpu_info struct!"}},
        {doMonitor, {kStatusBadCommand, "thread creation failed\n"}},
    };
    return table;
}

class AllocationFaultTest : public console_test::FolderTest
{
protected:
    AllocationFaultTest() { writeInputFiles(); }
};

/** What is seen of a line whose file cannot be had for want of memory. */
Observation withoutFile(const CommandLine& line, Observation seen)
{
    seen.saved.reset();
    if (line.row->handler == doMultReg || line.row->handler == doCrtcReg) {
        std::string name = line.text.substr(line.text.rfind(' ') + 1);
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char letter) { return toupper(letter); });
        seen.status = kStatusBadCommand;
        seen.output = "Open " + name + " error\n";
    }
    return seen;
}

/** @return the number of allocations, all of which succeed */
int countAllocations(const CommandLine& line)
{
    bool refused = true;
    int number = 0;
    while (refused) {
        observeWithoutMemory(line, ++number, refused);
    }
    return number - 1;
}

TEST_F(AllocationFaultTest, EndsTheCommandWithTheDocumentedTextAndStatus)
{
    int refusals = 0;
    std::map<CmdHandler, int> refusalsOf;
    for (const CommandLine& line : commandLines()) {
        SCOPED_TRACE(line.text);
        const Observation whole = observe(line);
        const int allocations = countAllocations(line);
        for (int number = 1; number <= allocations; ++number) {
            bool refused = false;
            const Observation seen = observeWithoutMemory(line, number, refused);
            ASSERT_TRUE(refused);
            ++refusals;
            EXPECT_FALSE(seen.saved) << "a file is written of what was not read";
            if (whole.saved && number == allocations) {
                const Observation expected = withoutFile(line, whole);
                EXPECT_EQ(seen.status, expected.status);
                EXPECT_EQ(seen.output, expected.output);
                EXPECT_EQ(seen.error, expected.error);
                continue;
            }
            ++refusalsOf[line.row->handler];
            const auto found = documented().find(line.row->handler);
            ASSERT_NE(found, documented().end()) << "asks for memory";
            EXPECT_EQ(seen.status, found->second.status);
            EXPECT_EQ(seen.output, found->second.output);
            EXPECT_EQ(seen.error, found->second.error);
        }
    }
    for (const auto& [handler, expected] : documented()) {
        EXPECT_GT(refusalsOf[handler], 0) << expected.output << expected.error;
    }
    std::cout << "Refused allocations: " << refusals << "\n";
}

/** Runs the finished program with an allocator of its own put before the C library's. */
class ProgramAllocationTest : public AllocationFaultTest
{
protected:
    void SetUp() override
    {
        if (TOVIRA_INSTRUMENTED) {
            GTEST_SKIP() << "the allocator is a sanitizer's";
        }
    }

    struct Run {
        child_process::Result result;
        bool refused;
        Files files;
    };

    /** @param number the allocation that is refused; none when 0 */
    static Run run(const CommandLine& line, int number)
    {
        for (const auto& entry : std::filesystem::directory_iterator(".")) {
            std::filesystem::remove_all(entry);
        }
        writeInputFiles();
        const std::string before(line.family->before);
        const std::string text = before.empty() ? line.text : before + ';' + line.text;
        const char* const card = line.example->deviceId == VEK_DEVICE_QZ202 ? "1" : "0";
        Run run = {.result = child_process::run({.arguments = {TOVIRA_UTIL_TOOL, "--card", card, "--cmd", text},
                                                 .environment = {{"LD_PRELOAD", REFUSED_ALLOCATION},
                                                                 {"REFUSED_ALLOCATION", std::to_string(number)},
                                                                 {"REFUSED_ALLOCATION_MARK", "refused"}},
                                                 .input = std::string(line.example->keys)}),
                   .refused = std::filesystem::remove("refused"),
                   .files = filesHere()};
        return run;
    }

    /** Whether the finished program takes its time over a line. */
    static bool waits(const CommandLine& line)
    {
        const CmdHandler handler = line.row->handler;
        return handler == doVer || handler == doZV || handler == doMonitor;
    }
};

TEST_F(ProgramAllocationTest, EndsInOrder)
{
    int refusals = 0;
    std::set<const Example*> taken;
    for (const CommandLine& line : commandLines()) {
        if (!taken.insert(line.example).second || waits(line)) {
            continue;
        }
        const Run whole = run(line, 0);
        for (int number = 1;; ++number) {
            SCOPED_TRACE(line.text + ", allocation " + std::to_string(number));
            const Run seen = run(line, number);
            EXPECT_FALSE(seen.result.timedOut);
            EXPECT_EQ(seen.result.signal, 0);
            if (!seen.refused) {
                EXPECT_EQ(seen.result.output, whole.result.output);
                break;
            }
            ++refusals;
            EXPECT_TRUE(seen.result.exitStatus == 0 || seen.result.exitStatus == 1) << seen.result.exitStatus;
            EXPECT_TRUE(std::includes(whole.files.begin(), whole.files.end(), seen.files.begin(), seen.files.end()))
                << "a file holds something else";
        }
    }
    EXPECT_GT(refusals, 0);
    std::cout << "Refused allocations of the program: " << refusals << "\n";
}

}  // namespace
}  // namespace faults_test
