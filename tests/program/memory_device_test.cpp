// `--mem` on the finished program, with a file in the place of physical memory.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

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

TEST_F(MemoryDevice, ZoomVideoFindsTheSizeOfThePictureInTheWindow)
{
    const auto output = [&](const std::string& height) {
        std::string memory(0x20000, '\0');
        memory.replace(0x110cc, 4, "\xd0\x02" + height);
        folder.writeFile("memory", memory);
        return runOnFile({programPath(), "--mem", "1000,1f000,0,0", "--cmd", "zv start 0"}).output;
    };
    EXPECT_THAT(output(std::string(2, '\0')), HasSubstr("Invalid argument."));
    EXPECT_THAT(output("\x40\x02"), Not(HasSubstr("Invalid argument.")));
    EXPECT_EQ(folder.readFile("memory").substr(0x110c0, 4), std::string("\1\0\0\0", 4)) << "it has looked";
}

/** The file as another program has it mapped. */
class MappedFile
{
public:
    MappedFile(const std::filesystem::path& name, std::size_t size) : size_(size)
    {
        const int file = open(name.c_str(), O_RDWR | O_CLOEXEC);
        bytes_ = static_cast<volatile std::uint8_t*>(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
        close(file);
    }
    ~MappedFile() { munmap(const_cast<std::uint8_t*>(bytes_), size_); }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    volatile std::uint8_t& operator[](std::size_t offset) { return bytes_[offset]; }
    volatile std::uint32_t& longAt(std::size_t offset)
    {
        return *reinterpret_cast<volatile std::uint32_t*>(bytes_ + offset);
    }

private:
    std::size_t size_;
    volatile std::uint8_t* bytes_;
};

TEST_F(MemoryDevice, TheMcuIsAskedThroughItsMailboxInTheWindow)
{
    constexpr std::size_t kSize = 0x50000;
    constexpr std::size_t kMailbox = 0x1000 + 0x3ff00;
    folder.writeFile("memory", std::string(kSize, '\0'));
    MappedFile memory(folder.path() / "memory", kSize);
    memory.longAt(kMailbox) = 0xdeadbeef;
    std::uint32_t address = 0;
    std::thread firmware([&] {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (memory[kMailbox + 0x13] != 0xaa && std::chrono::steady_clock::now() < end) {
        }
        address = memory.longAt(kMailbox + 0x14);
        memory[kMailbox + 0x80] = 0x5a;
        memory.longAt(kMailbox + 0x1c) = 0x55aa55aa;
    });
    const Result run = runOnFile({programPath(), "--mem", "1000,40000,0,0", "--cmd", "mcu aux r 202"});
    firmware.join();
    EXPECT_THAT(run.output, EndsWith("00000202: 5a\n"));
    EXPECT_EQ(address, 0x202U);
    EXPECT_EQ(memory[kMailbox + 0x11], 9) << "read over AUX";
    EXPECT_EQ(memory.longAt(kMailbox + 0x1c), 0U) << "the mailbox has been released";
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
