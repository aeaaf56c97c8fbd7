// The program with a state folder: what one run leaves, the next one finds; and what happens to folders that are not
// as they ought to be.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "child_process.h"
#include "scratch_folder.h"

namespace
{

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

const std::string kStartLine = "enter command line with /dev/vekrw for QZ201!\n";

class StateFolder : public testing::Test
{
protected:
    /** Runs the program with the state folder; an empty name leaves the variable unset. */
    child_process::Result run(const std::string& commands, const std::string& state) const
    {
        child_process::Command command{.arguments = {TOVIRA_UTIL_TOOL, "--cmd", commands}, .folder = scratch_.path("")};
        if (!state.empty()) {
            command.environment["VEK_STATE_FOLDER"] = state;
        }
        return child_process::run(command);
    }

    /** What the commands print in a run of their own. */
    std::string outputOf(const std::string& commands) const
    {
        const child_process::Result result = run(commands, folder());
        EXPECT_EQ(result.error, "") << commands;
        EXPECT_EQ(result.exitStatus, 0) << commands;
        EXPECT_THAT(result.output, StartsWith(kStartLine)) << commands;
        return result.output.substr(std::min(result.output.size(), kStartLine.size()));
    }

    /** Expects that the card cannot be opened and that one line says so, which begins with the name of a file. */
    void expectRefused(const std::string& file, const std::string& reason) const
    {
        const child_process::Result result = run("rwl 2000 1", folder());
        EXPECT_EQ(result.error.substr(0, result.error.find('\n')), folder() + file + ": " + reason);
        EXPECT_THAT(result.output, StartsWith("Open /dev/tovira device error\n")) << file;
        EXPECT_EQ(result.signal, 0);
    }

    std::string folder() const { return scratch_.path("state"); }
    std::string file(const std::string& name) const { return folder() + "/card0/" + name; }

    void patch(const std::string& name, std::size_t offset, const std::string& bytes) const
    {
        std::fstream stream(file(name), std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(static_cast<std::streamoff>(offset));
        stream << bytes;
        ASSERT_TRUE(stream.flush());
    }

    const ScratchFolder& scratch() const { return scratch_; }

private:
    ScratchFolder scratch_;
};

struct Family {
    std::string name;
    std::string write; /**< In one run. */
    std::string read;  /**< In the next. */
    std::string expected;
};

void PrintTo(const Family& family, std::ostream* out)
{
    *out << family.name;
}

class EveryFamily : public StateFolder, public testing::WithParamInterface<Family>
{
};

TEST_P(EveryFamily, IsThereInTheNextRun)
{
    const Family& family = GetParam();
    scratch().write("image", "firmware");
    const child_process::Result fresh = run(family.read, "");
    outputOf(family.write);
    EXPECT_THAT(outputOf(family.read), HasSubstr(family.expected));
    EXPECT_THAT(fresh.output, Not(HasSubstr(family.expected))) << "that is how a card comes up";
    EXPECT_EQ(run(family.read, "").output, fresh.output) << "without a folder a run starts afresh";
}

INSTANTIATE_TEST_SUITE_P(
    StateFolder, EveryFamily,
    testing::Values(Family{"Registers", "rwl 2000 12345678", "rrl 2000", "12345678"},
                    Family{"VideoMemory", "vwl c0000000 9abcdef0", "vrl c0000000", "9abcdef0"},
                    Family{"FilledVideoMemory", "vwls 1000 4000 11223344", "vrl 10ffc", "11223344"},
                    Family{"BoardRam", "awl 20000100 55667788", "arl 20000100", "55667788"},
                    Family{"RegistersByAmba", "awl 1002000 99aabbcc", "rrl 2000", "99aabbcc"},
                    Family{"DisplayControllerRegisters", "cwb 10 5a", "crb 10", "5a"},
                    Family{"PciConfiguration", "pci 3c ab", "pci 3c", "01ab"},
                    Family{"PciErrorBits", "pci 110 2000", "pci 110", "00000000"},
                    Family{"Flash", "spi program 1000 image", "spi read 1000 8", "66 69 72 6d 77 61 72 65"},
                    Family{"FlashProtection", "spi prot", "spi program 0 image;spi read 0 4", "ff ff ff ff"},
                    Family{"Eeprom", "i2c set 0 50;i2c wb f0 5c", "i2c set 0 50;i2c rb f0", "5c"},
                    Family{"MonitorSettings", "i2c set 1 4c;i2c wb 1 7", "i2c set 1 4c;i2c rb 1", ": 07"},
                    Family{"EightInputMonitorSettings", "i2c set 1 48;i2c wb 6 77", "i2c set 1 48;i2c rb 6", "77"},
                    Family{"VideoDecoderSettings", "i2c set 0 24;i2c wb a 99", "i2c set 0 24;i2c rb a", "99"},
                    Family{"Clocks", "clk 3d 500", "clk 3d", "500MHz"},
                    Family{"ClockSwitches", "clk off 5", "clk 3d", "3d frequency: 0MHz"},
                    Family{"PowerState", "power 2", "power", "standby"},
                    Family{"Fan", "fan 37", "rrl 30c004", "00000125"},
                    Family{"SimulatedTemperature", "thermal 50000", "rrl 30c010", "0000c350"},
                    Family{"Routing", "rwl 24 9", "crtc output", "CRTC-1 -> HDMI-0"},
                    Family{"HdmiPhy", "hdmi 0 phy st;hdmi 0 phy w 10 321", "hdmi 0 phy r 10", "0321"},
                    Family{"DpPhy", "dp 0 phy w 10 1234", "dp 0 phy r 10", "1234"},
                    Family{"DpController", "dp 0 cdb w 14 4321", "dp 0 cdb r 14", "4321"},
                    Family{"Dpcd", "dp 0 aux w 100 a", "dp 0 aux r 100", "0a"},
                    Family{"TrainedLink", "dp 0 init;dp 0 train", "dp 0 aux rs 202 3", "00000202: 77 77 01"},
                    Family{"MailboxPage", "rwl 3ff40 77777777", "rrl 3ff40", "77777777"},
                    Family{"McuReset", "rwl 308068 ffffff00", "rrl 308068", "ffffff00"},
                    Family{"Functions", "func texture", "func on", "Texture: on"},
                    Family{"GraphicsCards", "func mgpu 3", "func on", "Mgpu"},
                    Family{"ZoomVideo", "zv init 0;zv start 0", "rrl 100c0", "00000003"},
                    Family{"AxiMonitor", "rwl 309000 1", "rrl 309000", "00000001"},
                    Family{"DriversBuffers", "func texture;query vram", "dump vramfree", "4072844 of"}),
    [](const auto& test) { return test.param.name; });

TEST_F(StateFolder, IsMadeForThisUserOnly)
{
    outputOf("rwl 2000 1");
    struct stat status = {};
    for (const std::string& name : {folder(), folder() + "/card0"}) {
        ASSERT_EQ(stat(name.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700U) << name;
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder() + "/card0")) {
        ASSERT_EQ(stat(entry.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600U) << entry;
    }
}

TEST_F(StateFolder, TakesLittleRoomOnTheDisk)
{
    outputOf("vwl ff000000 1;rwl 2000 1;crtc gamma 0 br 0.5");
    std::uintmax_t blocks = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder() + "/card0")) {
        struct stat status = {};
        ASSERT_EQ(stat(entry.path().c_str(), &status), 0);
        blocks += static_cast<std::uintmax_t>(status.st_blocks);
    }
    constexpr std::uintmax_t kBlock = 512;
    EXPECT_LE(blocks * kBlock, 256U * 1024);
}

TEST_F(StateFolder, KeepsEachCardApart)
{
    outputOf("rwl 2000 11;card 1;rwl 2000 22");
    EXPECT_EQ(outputOf("rrl 2000;card 1;rrl 2000"), "00002000: 00000011\nset card index: 1\n00002000: 00000022\n");
}

TEST_F(StateFolder, DoesNotKeepTheHostsMemory)
{
    outputOf("kwl ffff888000000000 12345678");
    EXPECT_EQ(outputOf("krl ffff888000000000"), "ffff888000000000: 00000000\n");
}

TEST_F(StateFolder, AnEmptyNameIsNone)
{
    child_process::Command command{.arguments = {TOVIRA_UTIL_TOOL, "--cmd", "rwl 2000 1"},
                                   .environment = {{"VEK_STATE_FOLDER", ""}},
                                   .folder = scratch().path("")};
    EXPECT_EQ(child_process::run(command).output, kStartLine);
    EXPECT_TRUE(std::filesystem::is_empty(scratch().path("")));
}

TEST_F(StateFolder, IsSharedWithTheBoardAtASerialLine)
{
    outputOf("rwl 2000 12345678");
    const child_process::Result result = child_process::run(
        {.arguments =
             {"/bin/sh", "-c",
              R"("$0" --pty --once > name & while [ ! -s name ]; do kill -0 $! || exit 1; done; )"
              R"(n=$(cat name); "$1" --tty "${n#/dev/},115200" --cmd "rrl 1002000;rwl 1002004 87654321"; kill $!; wait)",
              VEK_BOARD, TOVIRA_UTIL_TOOL},
         .environment = {{"VEK_STATE_FOLDER", folder()}},
         .folder = scratch().path("")});
    EXPECT_THAT(result.output, HasSubstr("01002000: 12345678\n")) << result.error;
    EXPECT_EQ(outputOf("rrl 2004"), "00002004: 87654321\n");
}

TEST_F(StateFolder, OfARightThatOthersHaveIsRefused)
{
    outputOf("rwl 2000 1");
    for (const std::string& name : {std::string(), std::string("/card0"), std::string("/card0/state"),
                                    std::string("/card0/registers"), std::string("/card0/video-memory")}) {
        const std::string whole = folder() + name;
        struct stat status = {};
        ASSERT_EQ(stat(whole.c_str(), &status), 0);
        for (const mode_t others : {S_IWGRP, S_IWOTH}) {
            ASSERT_EQ(chmod(whole.c_str(), status.st_mode | others), 0);
            expectRefused(name, "other users may write to it");
        }
        ASSERT_EQ(chmod(whole.c_str(), status.st_mode & 07777), 0);
    }
    EXPECT_EQ(outputOf("rrl 2000"), "00002000: 00000001\n");
}

TEST_F(StateFolder, OfAnotherUserIsRefused)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    outputOf("rwl 2000 1");
    constexpr uid_t kNobody = 65534;
    for (const std::string& name : {std::string(), std::string("/card0"), std::string("/card0/registers")}) {
        const std::string whole = folder() + name;
        ASSERT_EQ(chown(whole.c_str(), kNobody, static_cast<gid_t>(-1)), 0);
        expectRefused(name, "belongs to another user");
        ASSERT_EQ(chown(whole.c_str(), 0, static_cast<gid_t>(-1)), 0);
    }
}

TEST_F(StateFolder, ThatIsALinkIsRefused)
{
    std::filesystem::create_directory(scratch().path("elsewhere"));
    std::filesystem::create_directory_symlink(scratch().path("elsewhere"), folder());
    expectRefused("", "Not a directory");
    EXPECT_TRUE(std::filesystem::is_empty(scratch().path("elsewhere")));
}

TEST_F(StateFolder, WithAFileThatIsALinkIsRefused)
{
    outputOf("rwl 2000 1");
    std::filesystem::rename(file("registers"), scratch().path("registers"));
    std::filesystem::create_symlink(scratch().path("registers"), file("registers"));
    expectRefused("/card0/registers", "Too many levels of symbolic links");
    std::filesystem::remove(file("registers"));
    std::filesystem::create_hard_link(scratch().path("registers"), file("registers"));
    expectRefused("/card0/registers", "has another name elsewhere");
}

TEST_F(StateFolder, WithAFileThatIsNoFileIsRefused)
{
    outputOf("rwl 2000 1");
    std::filesystem::remove(file("flash"));
    expectRefused("/card0/flash", "No such file or directory");
    ASSERT_EQ(mkfifo(file("flash").c_str(), 0600), 0);
    expectRefused("/card0/flash", "is not a regular file");
    std::filesystem::remove(file("flash"));
    std::filesystem::create_directory(file("flash"));
    expectRefused("/card0/flash", "Is a directory");
}

TEST_F(StateFolder, ThatCannotBeMadeIsRefused)
{
    const child_process::Result result = run("rwl 2000 1", scratch().path("missing/state"));
    EXPECT_EQ(result.error.substr(0, result.error.find('\n')),
              scratch().path("missing/state") + ": No such file or directory");
    scratch().write("state", "a file");
    expectRefused("", "Not a directory");
    EXPECT_EQ(scratch().read("state"), "a file");
}

TEST_F(StateFolder, WithFilesOfAnotherSizeIsRefused)
{
    outputOf("rwl 2000 1");
    for (const std::string name : {"state", "registers", "video-memory", "flash", "gamma-table-2", "crtc-registers"}) {
        const std::uintmax_t size = std::filesystem::file_size(file(name));
        for (const std::uintmax_t other : {std::uintmax_t{0}, size - 1, size + 1}) {
            std::filesystem::resize_file(file(name), other);
            expectRefused("/card0/" + name, "is not of the size that the card needs");
        }
        std::filesystem::resize_file(file(name), size);
        if (name == "state") {
            // The end of it is gone, which the newer of the two states may have been in or not.
            break;
        }
    }
}

TEST_F(StateFolder, WithAnotherStateIsRefused)
{
    outputOf("rwl 2000 1;fan 30;card 1;rwl 2000 1");
    patch("state", 0, "X");
    expectRefused("/card0/state", "is not the state of a card");
    patch("state", 0, "V");
    EXPECT_EQ(outputOf("rrl 30c004"), "0030c004: 0000011e\n");
    patch("state", 8, "\x07");
    expectRefused("/card0/state", "is damaged");
    std::filesystem::copy_file(folder() + "/card1/state", file("state"),
                               std::filesystem::copy_options::overwrite_existing);
    expectRefused("/card0/state", "is the state of a card of another description");
}

TEST_F(StateFolder, FallsBackToTheStateBeforeADamagedOne)
{
    // Each run leaves a state behind the one before, so the two that are kept tell the last two settings.
    outputOf("fan 30");
    outputOf("fan 31");
    const std::string whole = scratch().read("state/card0/state");
    std::size_t before = 0;
    for (std::size_t at = 0x40; at < whole.size(); at += 61) {
        patch("state", at, std::string(1, static_cast<char>(~whole[at])));
        const std::string found = outputOf("rrl 30c004");
        EXPECT_THAT(found, testing::AnyOf("0030c004: 0000011e\n", "0030c004: 0000011f\n")) << at;
        before += found == "0030c004: 0000011e\n" ? 1U : 0U;
        std::ofstream(file("state"), std::ios::binary | std::ios::in | std::ios::out) << whole;
    }
    EXPECT_GT(before, 10U);
}

TEST_F(StateFolder, WithBothStatesDamagedIsRefusedAndLeftAlone)
{
    outputOf("fan 30");
    const std::string rest(std::filesystem::file_size(file("state")) - 0x40, '\xa5');
    patch("state", 0x40, rest);
    const std::string damaged = scratch().read("state/card0/state");
    expectRefused("/card0/state", "is damaged");
    EXPECT_EQ(scratch().read("state/card0/state"), damaged);
}

TEST_F(StateFolder, LeftHalfMadeByAProgramThatWasKilledIsMadeAnew)
{
    std::filesystem::create_directories(folder() + "/card0.new");
    for (const char* name : {"/card0.new/state", "/card0.new/registers"}) {
        std::ofstream(folder() + name) << "half";
    }
    for (const char* name : {"", "/card0.new", "/card0.new/state", "/card0.new/registers"}) {
        const std::string whole = folder() + name;
        std::filesystem::permissions(whole, std::filesystem::perms::owner_all);
    }
    EXPECT_EQ(outputOf("rrl 0"), "00000000: 00000000\n");
    EXPECT_FALSE(std::filesystem::exists(folder() + "/card0.new"));
}

TEST_F(StateFolder, IsRefusedWhereFilesMayNotBeLarge)
{
    const child_process::Result result = child_process::run(
        {.arguments = {"/bin/sh", "-c", R"(ulimit -f 1024; "$0" --cmd "rwl 2000 1")", TOVIRA_UTIL_TOOL},
         .environment = {{"VEK_STATE_FOLDER", folder()}},
         .folder = scratch().path("")});
    EXPECT_THAT(result.error, HasSubstr("/card0.new/registers: File too large\n"));
    EXPECT_EQ(result.signal, 0);
    EXPECT_FALSE(std::filesystem::exists(folder() + "/card0"));
    outputOf("rwl 2000 1");
}

/** A file system of a test's own. */
class MountedFolder : public StateFolder
{
protected:
    MountedFolder() { std::filesystem::create_directory(scratch().path("disk")); }
    ~MountedFolder() override { umount2(scratch().path("disk").c_str(), MNT_DETACH); }

    bool mountDisk(const char* options) const
    {
        return mount("tmpfs", scratch().path("disk").c_str(), "tmpfs", 0, options) == 0;
    }

    std::string state() const { return scratch().path("disk/state"); }
};

TEST_F(MountedFolder, ThatIsReadOnlyIsRefused)
{
    if (!mountDisk("size=64m")) {
        GTEST_SKIP() << "a file system cannot be mounted here";
    }
    run("rwl 2000 1", state());
    ASSERT_EQ(mount(nullptr, scratch().path("disk").c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    EXPECT_THAT(run("rrl 2000", state()).error, StartsWith(state() + "/card0/state: Read-only file system\n"));
    EXPECT_THAT(run("rrl 2000", scratch().path("disk/other")).error,
                StartsWith(scratch().path("disk/other") + ": Read-only file system\n"));
}

TEST_F(MountedFolder, ThatIsFullLosesWhatHasNoRoomAndNothingElse)
{
    if (!mountDisk("size=160k")) {
        GTEST_SKIP() << "a file system cannot be mounted here";
    }
    EXPECT_EQ(run("fan 30;rwl 2000 1", state()).error, "");
    // The commands go on with pages that nobody keeps, and all that follows fails.
    const child_process::Result full = run("vwls 0 100000 11111111;vwls 400000 10 1;rwl 2000 2", state());
    EXPECT_EQ(full.signal, 0);
    EXPECT_THAT(full.error, StartsWith(state() + "/card0/video-memory: a part cannot be reached any more"));
    const child_process::Result after = run("rrl 2000;rrl 30c004;vrl 0", state());
    EXPECT_EQ(after.output, kStartLine + "00002000: 00000001\n0030c004: 0000011e\n00000000: 11111111\n");
}

}  // namespace
