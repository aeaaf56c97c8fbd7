// The links that may lie on the way to a file, and those that may not.

#include "guarded_open.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <filesystem>
#include <string>

#include "scratch.h"

namespace
{

/** A descriptor that is closed with this object, or the error that there was instead. */
class Opened
{
public:
    explicit Opened(const std::string& name, int flags = O_RDONLY, mode_t mode = 0)
        : descriptor_(guarded::open(name.c_str(), flags, mode)), error_(descriptor_ < 0 ? errno : 0)
    {
    }
    ~Opened()
    {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    int error() const { return error_; }

    std::string text() const
    {
        std::string bytes(100, '\0');
        const ssize_t got = read(descriptor_, bytes.data(), bytes.size());
        return got < 0 ? "unreadable" : bytes.substr(0, static_cast<std::size_t>(got));
    }

private:
    int descriptor_;
    int error_;
};

int openDescriptors()
{
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count;
}

class GuardedOpen : public testing::Test
{
protected:
    GuardedOpen() : before_(openDescriptors())
    {
        scratch_.file("file", "text");
        std::filesystem::create_directories(scratch_ / "a/b");
        scratch_.file("a/b/file", "deep");
    }
    ~GuardedOpen() override { EXPECT_EQ(openDescriptors(), before_); }

    Scratch scratch_;

private:
    int before_;
};

TEST_F(GuardedOpen, OpensAsTheHostDoes)
{
    EXPECT_EQ(Opened(scratch_ / "file").text(), "text");
    EXPECT_EQ(Opened(scratch_ / "a//b/./../../a/b//file").text(), "deep");
    std::filesystem::current_path(scratch_ / "a");
    EXPECT_EQ(Opened("b/file").text(), "deep");
    EXPECT_EQ(Opened("../file").text(), "text");
    EXPECT_EQ(Opened("/").error(), 0);
    EXPECT_EQ(Opened(".").error(), 0);
    EXPECT_EQ(Opened("b/").error(), 0);
    for (const char* name : {"", "none", "none/file", "b/file/", "b/file/x", "none/"}) {
        const int descriptor = open(name, O_RDONLY);
        ASSERT_LT(descriptor, 0);
        const int expected = errno;
        EXPECT_EQ(Opened(name).error(), expected) << name;
    }
    EXPECT_EQ(Opened("b/new/", O_WRONLY | O_CREAT, 0666).error(), EISDIR);
    EXPECT_EQ(Opened(std::string(PATH_MAX, '/')).error(), ENAMETOOLONG);
    EXPECT_EQ(Opened(std::string(PATH_MAX - 1, '/')).error(), 0);
    EXPECT_EQ(Opened(std::string(NAME_MAX + 1, 'x')).error(), ENAMETOOLONG);
}

TEST_F(GuardedOpen, CreatesWithTheModeLessTheUmask)
{
    const mode_t before = umask(027);
    EXPECT_EQ(Opened(scratch_ / "new", O_WRONLY | O_CREAT, 0666).error(), 0);
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat((scratch_ / "new").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
    EXPECT_EQ(Opened(scratch_ / "new", O_WRONLY | O_CREAT | O_EXCL, 0666).error(), EEXIST);
}

TEST_F(GuardedOpen, FollowsLinksOfOrdinaryFolders)
{
    std::filesystem::create_symlink("b", scratch_ / "a/again");
    std::filesystem::create_symlink("again/file", scratch_ / "a/relative");
    std::filesystem::create_symlink(scratch_ / "a//", scratch_ / "absolute");
    std::filesystem::create_symlink("absolute/relative", scratch_ / "chain");
    EXPECT_EQ(Opened(scratch_ / "chain").text(), "deep");
    EXPECT_EQ(Opened(scratch_ / "absolute/again/../relative").text(), "deep");
    EXPECT_EQ(Opened(scratch_ / "absolute/").error(), 0);
    EXPECT_EQ(Opened(scratch_ / "chain/").error(), ENOTDIR);
    EXPECT_EQ(Opened(scratch_ / "chain", O_RDONLY | O_NOFOLLOW).error(), ELOOP);
    std::filesystem::create_symlink("made", scratch_ / "to be made");
    EXPECT_EQ(Opened(scratch_ / "to be made", O_WRONLY | O_CREAT, 0666).error(), 0);
    EXPECT_TRUE(std::filesystem::exists(scratch_ / "made"));
}

TEST_F(GuardedOpen, EndsInLoopsAndInLinksThatLeadTooFar)
{
    std::filesystem::create_symlink("loop", scratch_ / "loop");
    EXPECT_EQ(Opened(scratch_ / "loop").error(), ELOOP);
    EXPECT_EQ(Opened(scratch_ / "loop/file").error(), ELOOP);
    std::string target = "file";
    for (int number = 1; number <= 41; ++number) {
        const std::string name = "link" + std::to_string(number);
        std::filesystem::create_symlink(target, scratch_ / name);
        target = name;
    }
    EXPECT_EQ(Opened(scratch_ / "link40").text(), "text");
    EXPECT_EQ(Opened(scratch_ / "link41").error(), ELOOP);
    std::filesystem::create_symlink(std::string(PATH_MAX - 10, '/') + "tmp", scratch_ / "long");
    EXPECT_EQ(Opened(scratch_ / "long").error(), 0);
    EXPECT_EQ(Opened(scratch_ / "long/some/file").error(), ENAMETOOLONG);
}

TEST_F(GuardedOpen, FollowsTheLinksToOpenFiles)
{
    const int descriptor = open((scratch_ / "file").c_str(), O_RDONLY);
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    EXPECT_EQ(Opened(link).text(), "text");
    std::filesystem::create_symlink(link, scratch_ / "opened");
    EXPECT_EQ(Opened(scratch_ / "opened").text(), "text");
    // What has lost its name can be reached by such a link only.
    std::filesystem::remove(scratch_ / "file");
    EXPECT_EQ(Opened(link).text(), "text");
    close(descriptor);
    std::filesystem::current_path(scratch_.path());
    EXPECT_EQ(Opened("/proc/self/cwd/a/b/file").text(), "deep");
}

class GuardedOpenLinks : public GuardedOpen
{
protected:
    void SetUp() override
    {
        SKIP_UNLESS_ROOT();
        shared_ = scratch_.sharedFolder("shared");
    }

    std::string shared_;
};

TEST_F(GuardedOpenLinks, RefusesThoseOfAnotherUserInASharedFolder)
{
    Scratch::link("../file", shared_ + "/theirs", kNobody);
    Scratch::link("../a", shared_ + "/folder", kNobody);
    Scratch::link("../made", shared_ + "/new", kNobody);
    EXPECT_EQ(Opened(shared_ + "/theirs").error(), EACCES);
    EXPECT_EQ(Opened(shared_ + "/theirs", O_WRONLY | O_CREAT | O_TRUNC, 0666).error(), EACCES);
    EXPECT_EQ(Opened(shared_ + "/folder/b/file").error(), EACCES);
    EXPECT_EQ(Opened(shared_ + "/new", O_WRONLY | O_CREAT, 0666).error(), EACCES);
    EXPECT_FALSE(std::filesystem::exists(scratch_ / "made"));
    EXPECT_EQ(Scratch::contents(scratch_ / "file"), "text");
    // The way there may begin with a link that is all right.
    Scratch::link("shared/theirs", scratch_ / "mine", 0);
    EXPECT_EQ(Opened(scratch_ / "mine").error(), EACCES);
    std::filesystem::current_path(shared_);
    EXPECT_EQ(Opened("theirs").error(), EACCES);
}

TEST_F(GuardedOpenLinks, FollowsOwnOnesAndThoseOfOtherFolders)
{
    Scratch::link("../file", shared_ + "/own", 0);
    EXPECT_EQ(Opened(shared_ + "/own").text(), "text");
    Scratch::link("../file", shared_ + "/theirs", kNobody);
    for (const mode_t mode : {01755U, 0777U, 01775U}) {
        ASSERT_EQ(chmod(shared_.c_str(), mode), 0);
        EXPECT_EQ(Opened(shared_ + "/theirs").text(), "text") << std::oct << mode;
    }
}

TEST_F(GuardedOpenLinks, GoByTheEffectiveUser)
{
    Scratch::link("../file", shared_ + "/theirs", kNobody);
    Scratch::link("../file", shared_ + "/ours", 0);
    Scratch::link("../file", shared_ + "/others", kNobody - 1);
    ASSERT_EQ(seteuid(kNobody), 0);
    const int theirs = Opened(shared_ + "/theirs").error();
    const int ours = Opened(shared_ + "/ours").error();
    const int others = Opened(shared_ + "/others").error();
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(theirs, 0);
    EXPECT_EQ(ours, 0);
    EXPECT_EQ(others, EACCES);
}

}  // namespace
