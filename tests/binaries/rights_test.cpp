// What the program does with rights: those that its file gives it, and its user's over files.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "child_process.h"
#include "pty_console.h"
#include "scratch.h"

namespace
{

using Words = std::vector<std::string>;

const std::string kTool = TOVIRA_UTIL_TOOL;

/** The variables that the sources name, whichever they are. */
std::set<std::string> variables()
{
    const child_process::Result found =
        child_process::run({.arguments = {"/bin/sh", "-c",
                                          "grep -rhoE --include='*.cpp' --include='*.h' '\"(VEK|TOVIRA)_[A-Z_]+\"' "
                                          "common src vek | tr -d '\"'"},
                            .folder = TOVIRA_SOURCE_FOLDER});
    std::istringstream lines(found.output);
    std::set<std::string> names;
    for (std::string line; std::getline(lines, line);) {
        names.insert(line);
    }
    return names;
}

/** Notices whether anything is done with a file, or in a folder. */
class Watch
{
public:
    explicit Watch(const std::string& path) : descriptor_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        EXPECT_GE(inotify_add_watch(descriptor_, path.c_str(), IN_OPEN | IN_CREATE | IN_ACCESS | IN_MODIFY), 0);
    }
    ~Watch() { close(descriptor_); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    bool noticed()
    {
        std::array<char, 4096> events{};
        return read(descriptor_, events.data(), events.size()) > 0;
    }

private:
    int descriptor_;
};

class RaisedRights : public testing::Test
{
protected:
    void SetUp() override
    {
        SKIP_UNLESS_ROOT();
        if (!TOVIRA_HARDENED) {
            GTEST_SKIP() << "a sanitizer's program must not have raised rights";
        }
        struct statvfs status = {};
        ASSERT_EQ(statvfs(scratch_.path().c_str(), &status), 0);
        if ((status.f_flag & ST_NOSUID) != 0) {
            GTEST_SKIP() << "NOT TESTED: " << scratch_.path() << " raises nobody's rights";
        }
        program_ = scratch_ / "program";
        std::filesystem::copy_file(TOVIRA_PROGRAM_TO_RAISE, program_);
        ASSERT_EQ(chmod(program_.c_str(), 0755), 0);
    }

    /** Makes the copy of the program run with root's rights, whoever starts it. */
    void setUserId() { ASSERT_EQ(chmod(program_.c_str(), 04755), 0); }

    /** Gives the copy of the program root's rights over files, whoever starts it. */
    void setCapability()
    {
        vfs_cap_data capabilities{};
        capabilities.magic_etc = VFS_CAP_REVISION_2 | VFS_CAP_FLAGS_EFFECTIVE;
        capabilities.data[0].permitted = 1U << CAP_DAC_OVERRIDE;
        if (setxattr(program_.c_str(), "security.capability", &capabilities, XATTR_CAPS_SZ_2, 0) != 0) {
            GTEST_SKIP() << "NOT TESTED: capabilities of files are not supported in " << scratch_.path();
        }
    }

    child_process::Result run(const Words& user, const Words& arguments,
                              const std::map<std::string, std::string>& environment)
    {
        Words command = user;
        command.push_back(program_);
        command.insert(command.end(), arguments.begin(), arguments.end());
        return child_process::run({.arguments = command, .environment = environment, .folder = scratch_.path()});
    }

    /** Whether the program looks at what a variable names, be it a file or a folder. */
    bool honours(const Words& user, const std::string& variable)
    {
        bool noticed = false;
        for (const bool asFolder : {false, true}) {
            const std::string place = scratch_ / (variable + (asFolder ? "-folder" : "-file"));
            if (asFolder) {
                std::filesystem::create_directory(place);
            } else {
                scratch_.file(variable + "-file", "");
            }
            Watch watch(place);
            for (const Words& arguments :
                 {Words{"--cmd", "rrb 0"}, Words{"--mem", "1000,1000,0,0", "--cmd", "version"}}) {
                const child_process::Result result = run(user, arguments, {{variable, place}});
                EXPECT_GE(result.exitStatus, 0) << "killed by signal " << result.signal;
            }
            noticed = watch.noticed() || noticed;
            std::filesystem::remove_all(place);
        }
        return noticed;
    }

    /** As whoever started the program with raised rights would have it do things. */
    void expectNothingHonoured()
    {
        const std::set<std::string> names = variables();
        EXPECT_THAT(names, testing::IsSupersetOf({"VEK_CARD_DESCRIPTION", "VEK_MEM_DEVICE", "VEK_STATE_FOLDER"}));
        // It must be able to run at all.
        EXPECT_THAT(run(kAsNobody, {"--cmd", "rrb 0"}, {}).output, testing::HasSubstr("00000000: "));
        for (const std::string& name : names) {
            EXPECT_FALSE(honours(kAsNobody, name)) << name;
        }
        // The loader has its own, of which this one would put another library in the place of ours.
        run(kAsNobody, {"--cmd", "rrb 0"},
            {{"LD_LIBRARY_PATH", TOVIRA_FOREIGN_LIBRARY_FOLDER}, {"RECORDING_VEK_LOG", scratch_ / "log"}});
        EXPECT_FALSE(std::filesystem::exists(scratch_ / "log"));
    }

    static inline const Words kAsNobody = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
    Scratch scratch_;
    std::string program_;
};

// That the tests below can tell the difference.
TEST_F(RaisedRights, AreNeededToSilenceTheVariables)
{
    for (const std::string& name : variables()) {
        EXPECT_TRUE(honours({}, name)) << name;
    }
    run({}, {"--cmd", "rrb 0"},
        {{"LD_LIBRARY_PATH", TOVIRA_FOREIGN_LIBRARY_FOLDER}, {"RECORDING_VEK_LOG", scratch_ / "log"}});
    EXPECT_TRUE(std::filesystem::exists(scratch_ / "log"));
}

TEST_F(RaisedRights, OfASetUserIdFileSilenceTheVariables)
{
    setUserId();
    expectNothingHonoured();
}

TEST_F(RaisedRights, OfACapabilitySilenceTheVariables)
{
    setCapability();
    if (!IsSkipped()) {
        expectNothingHonoured();
    }
}

TEST(Variables, AreAllDocumentedAndNoOthers)
{
    const std::string document = Scratch::contents(TOVIRA_SOURCE_FOLDER "/docs/environment.md");
    std::set<std::string> documented;
    const std::regex row("\n\\| `([A-Z_]+)` \\|");
    for (std::sregex_iterator found(document.begin(), document.end(), row); found != std::sregex_iterator(); ++found) {
        documented.insert((*found)[1]);
    }
    EXPECT_EQ(documented, variables());
    for (const char* const ofTheSystem : {"`TERM`", "`LD_LIBRARY_PATH`"}) {
        EXPECT_THAT(document, testing::HasSubstr(ofTheSystem));
    }
    // Nobody else asks for one.
    const child_process::Result calls = child_process::run(
        {.arguments = {"/bin/sh", "-c",
                       "grep -rhE --include='*.cpp' --include='*.h' 'getenv\\(' common src vek | wc -l"},
         .folder = TOVIRA_SOURCE_FOLDER});
    EXPECT_EQ(calls.output, std::to_string(documented.size() + 1) + "\n") << "with that for TERM";
}

/** A command that writes a file, and the file's name. */
struct Writing {
    Words arguments;
    std::string file;
    /** Whether it follows links of its own user's. */
    bool followsOwnLinks = true;
};

std::vector<Writing> writings()
{
    std::vector<Writing> all = {
        {.arguments = {"--cmd", "i2c set 0 50;i2c rbs 0 8 OUT"}, .file = "OUT"},
        {.arguments = {"--cmd", "ddc 0 OUT"}, .file = "OUT"},
        {.arguments = {"--cmd", "spi read 0 10 OUT"}, .file = "OUT"},
        {.arguments = {"--cmd", "monitor start"}, .file = "axiMonitorData", .followsOwnLinks = false},
    };
    for (const char* command :
         {"rrbs", "rrws", "rrls", "rrqs", "vrbs", "vrws", "vrls", "vrqs", "arbs", "arws", "arls", "crbs"}) {
        all.push_back({.arguments = {"--cmd", command + std::string(" 0 10 OUT")}, .file = "OUT"});
    }
    return all;
}

child_process::Result runIn(const std::string& folder, const Words& arguments)
{
    Words command = {"/bin/sh", "-c", "umask 027; exec \"$0\" \"$@\"", kTool};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return child_process::run({.arguments = command, .folder = folder});
}

mode_t modeOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

TEST(CreatedFiles, HaveTheModeThatTheUmaskLeaves)
{
    for (const Writing& writing : writings()) {
        SCOPED_TRACE(writing.arguments.back());
        const Scratch folder;
        runIn(folder.path(), writing.arguments);
        EXPECT_EQ(modeOf(folder / writing.file), 0640U);
    }
}

TEST(CreatedFiles, OfTheMonitorLieInAFolderOfTheModeThatTheUmaskLeaves)
{
    const Scratch folder;
    PtyConsole console(
        {.arguments = {"/bin/sh", "-c", "umask 027; cd \"$0\"; exec \"$1\" --card 1 --cmd 'monitor start'",
                       folder.path(), kTool}});
    // The collector makes the file when its thread gets to run, some time before the key ends it.
    const std::string name = console.readThrough("time_foldername: ").empty() ? "" : console.readThrough("\r\n");
    ASSERT_GT(name.size(), 2U);
    const std::string made = folder / name.substr(0, name.size() - 2);
    const auto deadline = std::chrono::steady_clock::now() + PtyConsole::kTimeout;
    while (!std::filesystem::exists(made + "/axiMonitorData") && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_TRUE(console.send("d"));
    EXPECT_EQ(modeOf(made), 0750U);
    EXPECT_EQ(modeOf(made + "/axiMonitorData"), 0640U);
}

TEST(CreatedFiles, AreNotPutWhereAStrangersLinkLeads)
{
    SKIP_UNLESS_ROOT();
    for (const Writing& writing : writings()) {
        SCOPED_TRACE(writing.arguments.back());
        const Scratch scratch;
        const std::string shared = scratch.sharedFolder("shared");
        const std::string target = scratch.file("target", "kept");
        Scratch::link(target, shared + "/" + writing.file, kNobody);
        runIn(shared, writing.arguments);
        EXPECT_EQ(Scratch::contents(target), "kept");
        // The same command would have written, had it not been for the link's owner.
        std::filesystem::remove(shared + "/" + writing.file);
        if (writing.followsOwnLinks) {
            Scratch::link(target, shared + "/" + writing.file, 0);
            runIn(shared, writing.arguments);
            EXPECT_NE(Scratch::contents(target), "kept");
        }
    }
}

// Where the link leads to nothing yet, the file is not made there.
TEST(CreatedFiles, AreNotMadeWhereAStrangersLinkLeads)
{
    SKIP_UNLESS_ROOT();
    for (const Writing& writing : writings()) {
        SCOPED_TRACE(writing.arguments.back());
        const Scratch scratch;
        const std::string shared = scratch.sharedFolder("shared");
        Scratch::link(scratch / "target", shared + "/" + writing.file, kNobody);
        runIn(shared, writing.arguments);
        EXPECT_FALSE(std::filesystem::exists(scratch / "target"));
    }
}

TEST(ReadFiles, AreNotThoseThatAStrangersLinkLeadsTo)
{
    SKIP_UNLESS_ROOT();
    const Scratch scratch;
    const std::string shared = scratch.sharedFolder("shared");
    Scratch::link(scratch.file("secret", "rwb 40 77\n"), shared + "/script", kNobody);
    const child_process::Result result = runIn(shared, {"--cmd", "load script"});
    EXPECT_EQ(result.error, "Open file failed: Permission denied\n");
    EXPECT_THAT(result.output, testing::Not(testing::HasSubstr("rwb")));
}

}  // namespace
