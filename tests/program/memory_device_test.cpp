// `--mem` on the finished program, with a file in the place of physical memory.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "program_support.h"

namespace program_test
{
namespace
{

using child_process::Result;
using ::testing::ContainsRegex;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr std::size_t kFileSize = 0x10000;
constexpr const char* kRanges = "1230,2000,8004,1003";

class MemoryDevice : public ::testing::Test
{
protected:
    MemoryDevice() { folder.writeFile("memory", std::string(kFileSize, '\0')); }

    Result runOnFile(Arguments arguments) const
    {
        return child_process::run({.arguments = std::move(arguments),
                                   .environment = {{"VEK_MEM_DEVICE", "memory"}, {"ASAN_OPTIONS", "detect_leaks=0"}},
                                   .folder = folder.path()});
    }

    TemporaryFolder folder;
};

TEST_F(MemoryDevice, CommandsReachTheWindows)
{
    const Result run = runOnFile({programPath(), "--mem", kRanges, "--cmd", "rwl 10 11223344;rrl 10;vwb 1 5a;vrb 1"});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_THAT(run.output, HasSubstr("enter command line with /dev/mem for QZ0!\n"));
    EXPECT_THAT(run.output, EndsWith("00000010: 11223344\n00000001: 5a\n"));
    const std::string memory = folder.readFile("memory");
    EXPECT_EQ(memory.substr(0x1240, 4), "\x44\x33\x22\x11");
    EXPECT_EQ(memory.at(0x8005), '\x5a');
    EXPECT_EQ(memory.size(), kFileSize);
}

TEST_F(MemoryDevice, WhatIsNotBehindTheMappingFails)
{
    const Result run = runOnFile({programPath(), "--mem", kRanges, "--cmd", "dp 0 aux r 0;temp"});
    EXPECT_THAT(run.output, EndsWith("aux read [0] error\nSensor 0: get temprature failed\n"
                                     "Invalid argument. Use help or ? for command info\n"));
}

TEST_F(MemoryDevice, MonitorControlIsAPlainRegisterOfTheWindow)
{
    folder.writeFile("memory", std::string(0x400000, '\0'));
    const Result run =
        runOnFile({programPath(), "--gpu", "QZ201", "--mem", "1000,3ff000,0,0", "--cmd", "monitor f;rrl 309000"});
    EXPECT_THAT(run.output, EndsWith("Monitor the axi trans final!\n00309000: 00000002\n"));
}

TEST_F(MemoryDevice, AFileThatIsTooShortIsRefused)
{
    const Result run = runOnFile({programPath(), "--mem", "1000,f001,0,0", "--cmd", "rrb 0"});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_THAT(run.output, HasSubstr("Open /dev/mem device error\n"));
}

// Whole pages around each window, shared, and of the device that was opened for reading and writing past the cache.
TEST_F(MemoryDevice, MapsThePagesAroundEachWindow)
{
    if (child_process::run({.arguments = {"strace", "-o", "/dev/null", "true"}}).exitStatus != 0) {
        GTEST_SKIP() << "this system does not let strace trace";
    }
    const Result run = runOnFile(
        {"strace", "-e", "trace=openat,mmap,munmap", "-o", "trace", programPath(), "--mem", kRanges, "--cmd", "rrb 0"});
    ASSERT_EQ(run.exitStatus, 0) << run.error;
    const std::string trace = folder.readFile("trace");
    EXPECT_THAT(trace, ContainsRegex("openat\\(AT_FDCWD, \"memory\", O_RDWR[^)]*O_SYNC[^)]*O_CLOEXEC"));
    EXPECT_THAT(trace, ContainsRegex("mmap\\(NULL, 8752, PROT_READ\\|PROT_WRITE, MAP_SHARED, [0-9]+, 0x1000\\)"));
    EXPECT_THAT(trace, ContainsRegex("mmap\\(NULL, 4103, PROT_READ\\|PROT_WRITE, MAP_SHARED, [0-9]+, 0x8000\\)"));
    EXPECT_THAT(trace, ContainsRegex("munmap\\([^,]+, 8752\\)"));
    EXPECT_THAT(trace, ContainsRegex("munmap\\([^,]+, 4103\\)"));
}

}  // namespace
}  // namespace program_test
