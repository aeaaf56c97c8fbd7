// The finished program with its second thread, which collects what the monitor of the second card counts.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "pty_console.h"

namespace
{

class MonitorThread : public testing::Test
{
protected:
    MonitorThread() : folder_(testing::TempDir() + "monitor-XXXXXX")
    {
        // The collector leaves its folders where the program is started.
        if (mkdtemp(folder_.data()) == nullptr) {
            ADD_FAILURE() << "no folder for the test";
        }
        std::filesystem::current_path(folder_);
    }
    ~MonitorThread() override
    {
        std::error_code ignored;
        std::filesystem::current_path("/", ignored);
        std::filesystem::remove_all(folder_, ignored);
    }

private:
    std::string folder_;
};

bool shows(PtyConsole& console, const std::string& text)
{
    return console.readThrough(text).ends_with(text);
}

// A build for the thread sanitizer would end with a status of its own.
TEST_F(MonitorThread, WorksBesideTheConsoleAndEndsAtItsKey)
{
    PtyConsole console({.arguments = {TOVIRA_UTIL_TOOL, "--card", "1"}});
    ASSERT_TRUE(shows(console, ">"));
    for (int round = 0; round < 5; ++round) {
        ASSERT_TRUE(console.send("monitor start\r"));
        ASSERT_TRUE(shows(console, "time_foldername: "));
        ASSERT_TRUE(console.send("x"));
        ASSERT_TRUE(shows(console, "please input 'd' to done the thread"));
        ASSERT_TRUE(console.send("d"));
        ASSERT_TRUE(shows(console, "is collected, please check the axiMonitorData file\r\n>"));
        // The thread may still be on its way out.
        ASSERT_TRUE(console.send("monitor clear;rrl 288800;temp\r"));
        ASSERT_TRUE(shows(console, "\n>"));
    }
    ASSERT_TRUE(console.send("quit\r"));
    const std::string rest = console.readToEnd();
    const std::optional<ProcessEvent> event = console.waitForEvent();
    ASSERT_TRUE(event.has_value());
    EXPECT_TRUE(event->exitedWith(0)) << testing::PrintToString(*event) << rest;
}

}  // namespace
