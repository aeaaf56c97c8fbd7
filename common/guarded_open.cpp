#include "guarded_open.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

namespace guarded
{
namespace
{

// As many as the kernel follows on one way.
constexpr int kMostLinks = 40;

constexpr int kPlaceFlags = O_PATH | O_CLOEXEC;

/// A way to a file: the folder that was reached, and the path that is left from there.
class Way
{
public:
    Way() = default;
    ~Way() { leaveFolder(); }
    Way(const Way&) = delete;
    Way& operator=(const Way&) = delete;

    /// Begins at the root or at the working folder; false with errno set.
    bool begin(const char* path);

    /// Goes to the end and opens what is there, as openat(2) does.
    int open(int flags, mode_t mode);

private:
    enum class Step { kFailed, kDone, kOpened };

    int openLast(int flags, mode_t mode) const;
    int openPlace() const;
    Step stepOn(int flags, mode_t mode, int& opened);
    Step follow(int link, int flags, mode_t mode, int& opened);
    bool mayFollow(int link) const;
    bool takeTarget(int link);
    bool enter(int folder);
    void splitPath();
    void leaveFolder();

    int folder_ = -1;
    int links_ = 0;
    char path_[PATH_MAX] = {};  ///< what is left of it; its first name is terminated once it is split off
    char* rest_ = path_;        ///< behind that name
    bool isLast_ = false;
    bool asFolder_ = false;  ///< a slash follows the last name
};

bool isLink(int place)
{
    struct stat status = {};
    return fstat(place, &status) == 0 && S_ISLNK(status.st_mode);
}

bool isOfProc(int place)
{
    struct statfs status = {};
    return fstatfs(place, &status) == 0 && status.f_type == PROC_SUPER_MAGIC;
}

bool Way::begin(const char* path)
{
    if (*path == '\0') {
        errno = ENOENT;
        return false;
    }
    const std::size_t length = strnlen(path, sizeof path_);
    if (length == sizeof path_) {
        errno = ENAMETOOLONG;
        return false;
    }
    memcpy(path_, path, length + 1);
    return enter(::open(*path == '/' ? "/" : ".", kPlaceFlags | O_DIRECTORY));
}

// Cuts the first name off the path.
void Way::splitPath()
{
    char* const name = path_ + strspn(path_, "/");
    const std::size_t length = strcspn(name, "/");
    const std::size_t slashes = strspn(name + length, "/");
    rest_ = name + length + slashes;
    isLast_ = *rest_ == '\0';
    asFolder_ = isLast_ && slashes > 0;
    name[length] = '\0';
    memmove(path_, name, length + 1);
}

int Way::open(int flags, mode_t mode)
{
    for (;;) {
        splitPath();
        if (isLast_) {
            const int opened = openLast(flags, mode);
            const bool mayBeLink = errno == ELOOP || (asFolder_ && errno == ENOTDIR);
            if (opened >= 0 || !mayBeLink || (flags & O_NOFOLLOW) != 0) {
                return opened;
            }
        }
        int opened = -1;
        const Step step = stepOn(flags, mode, opened);
        if (step != Step::kDone) {
            return opened;
        }
    }
}

int Way::openLast(int flags, mode_t mode) const
{
    if (asFolder_ && (flags & O_CREAT) != 0) {
        errno = EISDIR;
        return -1;
    }
    const char* const name = *path_ == '\0' ? "." : path_;
    return openat(folder_, name, flags | O_NOFOLLOW | (asFolder_ ? O_DIRECTORY : 0), mode);
}

// The first name of the path itself, be it a link. To ask for a folder mounts what is mounted at its first use.
int Way::openPlace() const
{
    const int folder = isLast_ ? -1 : openat(folder_, path_, kPlaceFlags | O_NOFOLLOW | O_DIRECTORY);
    return folder >= 0 ? folder : openat(folder_, path_, kPlaceFlags | O_NOFOLLOW);
}

// From the folder over the first name of the path, which leads to another folder or is a link.
Way::Step Way::stepOn(int flags, mode_t mode, int& opened)
{
    const int place = openPlace();
    if (place < 0) {
        return Step::kFailed;
    }
    if (isLink(place)) {
        const Step step = follow(place, flags, mode, opened);
        close(place);
        return step;
    }
    if (isLast_) {
        // No folder; or what was a link a moment ago is none any more.
        close(place);
        errno = asFolder_ ? ENOTDIR : EAGAIN;
        return Step::kFailed;
    }
    memmove(path_, rest_, strlen(rest_) + 1);
    return enter(place) ? Step::kDone : Step::kFailed;
}

Way::Step Way::follow(int link, int flags, mode_t mode, int& opened)
{
    if (!mayFollow(link)) {
        errno = EACCES;
        return Step::kFailed;
    }
    if (++links_ > kMostLinks) {
        errno = ELOOP;
        return Step::kFailed;
    }
    if (!isOfProc(link)) {
        return takeTarget(link) ? Step::kDone : Step::kFailed;
    }
    // The text of such a link need not be the way to its target: the kernel knows that.
    if (isLast_) {
        opened = openat(folder_, path_, flags, mode);
        return opened < 0 ? Step::kFailed : Step::kOpened;
    }
    const int place = openat(folder_, path_, kPlaceFlags | O_DIRECTORY);
    memmove(path_, rest_, strlen(rest_) + 1);
    return enter(place) ? Step::kDone : Step::kFailed;
}

bool Way::mayFollow(int link) const
{
    struct stat owned = {};
    struct stat folder = {};
    if (fstat(link, &owned) != 0 || fstat(folder_, &folder) != 0) {
        return false;
    }
    constexpr mode_t kShared = S_ISVTX | S_IWOTH;
    return (folder.st_mode & kShared) != kShared || owned.st_uid == geteuid() || owned.st_uid == 0;
}

// Puts the target of a link in the place of its name.
bool Way::takeTarget(int link)
{
    char target[PATH_MAX];
    const ssize_t got = readlinkat(link, "", target, sizeof target);
    if (got <= 0) {
        errno = got == 0 ? ENOENT : errno;
        return false;
    }
    const auto length = static_cast<std::size_t>(got);
    const std::size_t rest = strlen(rest_);
    // A slash between the two, or behind the last name where one was, and the end.
    if (length + 1 + rest + 1 > sizeof path_) {
        errno = ENAMETOOLONG;
        return false;
    }
    const bool isAbsolute = target[0] == '/';
    memmove(path_ + length + 1, rest_, rest + 1);
    memcpy(path_, target, length);
    path_[length] = isLast_ && !asFolder_ ? '\0' : '/';
    return !isAbsolute || enter(::open("/", kPlaceFlags | O_DIRECTORY));
}

// Takes over the descriptor of a folder, or what opening one has failed with.
bool Way::enter(int folder)
{
    if (folder < 0) {
        return false;
    }
    leaveFolder();
    folder_ = folder;
    return true;
}

void Way::leaveFolder()
{
    if (folder_ >= 0) {
        close(folder_);
    }
    folder_ = -1;
}

}  // namespace

int open(const char* name, int flags, mode_t mode)
{
    int opened = -1;
    // A file system of another process or machine may be interrupted while it looks for the file.
    do {
        Way way;
        opened = way.begin(name) ? way.open(flags, mode) : -1;
    } while (opened < 0 && errno == EINTR);
    return opened;
}

}  // namespace guarded
