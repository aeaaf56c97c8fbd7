// Dumps while a thread of the library prints to the same stream.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

#include "console_support.h"

namespace memory_test
{
namespace
{

/** Prints a line again and again until it goes. */
class PrintingThread
{
public:
    PrintingThread()
        : thread_([this] {
              do {
                  puts("tick");
                  usleep(1);
              } while (!ended_);
          })
    {
    }
    ~PrintingThread()
    {
        ended_ = true;
        thread_.join();
    }
    PrintingThread(const PrintingThread&) = delete;
    PrintingThread& operator=(const PrintingThread&) = delete;

private:
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

/** Takes the lines of the thread out, and expects each of them where a line of the dump begins or ends. */
std::string withoutTicks(std::string output)
{
    const std::string tick = "tick\n";
    for (std::size_t at = output.find(tick); at != std::string::npos; at = output.find(tick, at)) {
        while (output.compare(at, tick.size(), tick) == 0) {
            output.erase(at, tick.size());
        }
        EXPECT_TRUE(at == 0 || at >= output.size() || output[at] == '\n' || output[at - 1] == '\n') << at;
    }
    return output;
}

TEST(LibraryThread, LeavesTheLinesOfADumpWhole)
{
    for (const char* command : {"rrls 0 8000", "rrbs 0 8000"}) {
        const std::string expected = console_test::runLine(command).output;
        console_test::Outcome outcome;
        {
            const PrintingThread printing;
            outcome = console_test::runLine(command);
        }
        EXPECT_NE(outcome.output, expected) << "the thread has printed";
        EXPECT_TRUE(withoutTicks(outcome.output) == expected) << command;
    }
}

}  // namespace
}  // namespace memory_test
