// Every allocation that a command makes fails, one after the other.

#include <iostream>
#include <map>
#include <string>

#include "command_lines.h"
#include "console_support.h"
#include "observation.h"
#include "tovira_parse/handlers.h"

namespace faults_test
{
namespace
{

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

TEST_F(AllocationFaultTest, EndsTheCommandWithTheDocumentedTextAndStatus)
{
    int refusals = 0;
    std::map<CmdHandler, int> refusalsOf;
    for (const CommandLine& line : commandLines()) {
        SCOPED_TRACE(line.text);
        bool refused = true;
        for (int number = 1; refused; ++number) {
            const Observation seen = observeWithoutMemory(line, number, refused);
            if (!refused) {
                EXPECT_EQ(seen.output, observe(line).output);
                continue;
            }
            ++refusals;
            ++refusalsOf[line.row->handler];
            const auto found = documented().find(line.row->handler);
            ASSERT_NE(found, documented().end()) << "asks for memory";
            EXPECT_EQ(seen.status, found->second.status);
            EXPECT_EQ(seen.output, found->second.output);
            EXPECT_EQ(seen.error, found->second.error);
            EXPECT_FALSE(seen.saved) << "a file is written of what was not read";
        }
    }
    for (const auto& [handler, expected] : documented()) {
        EXPECT_GT(refusalsOf[handler], 0) << expected.output << expected.error;
    }
    std::cout << "Refused allocations: " << refusals << "\n";
}

}  // namespace
}  // namespace faults_test
