#include "state/state_files.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

#include "vek.h"

namespace vek
{
namespace
{

constexpr int kOpenFlags = O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
constexpr mode_t kFolderMode = 0700;
constexpr mode_t kFileMode = 0600;
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;

/// Refuses what is not this user's alone.
int checkRights(const StatePath& path, const struct stat& status)
{
    if (status.st_uid != geteuid()) {
        return complain(path, "belongs to another user", VEK_PROTECTED);
    }
    if ((status.st_mode & kOthersWrite) != 0) {
        return complain(path, "other users may write to it", VEK_PROTECTED);
    }
    return VEK_OK;
}

int checkFile(const StatePath& path, const struct stat& status)
{
    if (!S_ISREG(status.st_mode)) {
        return complain(path, "is not a regular file", VEK_PROTECTED);
    }
    if (status.st_nlink != 1) {
        return complain(path, "has another name elsewhere", VEK_PROTECTED);
    }
    return checkRights(path, status);
}

/// Opens a file of the folder when it is one of ours; `flags` beyond those of every such file.
int openChecked(const StateEntry& entry, int flags, Descriptor& file, struct stat& status)
{
    file = Descriptor(openat(entry.folder, entry.name, flags | kOpenFlags, kFileMode));
    if (!file.isOpen() || fstat(file.number(), &status) != 0) {
        return complainOfSystem(entry.path, errno);
    }
    return checkFile(entry.path, status);
}

/// Whether the size is beyond what this process may make files of: trying would end it.
bool aboveLimit(std::uint64_t size)
{
    struct rlimit limit = {};
    return getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && size > limit.rlim_cur;
}

/// Of this open file, so that the kernel ends it with the last process that has it.
int setLock(int file, short type)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return fcntl(file, F_OFD_SETLK, &lock);
}

}  // namespace

Descriptor::~Descriptor()
{
    if (number_ >= 0) {
        close(number_);
    }
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    std::swap(number_, other.number_);
    return *this;
}

int Descriptor::release()
{
    return std::exchange(number_, -1);
}

StatePath::StatePath(const char* folder)
{
    std::snprintf(text_.data(), text_.size(), "%s", folder);
}

StatePath StatePath::operator/(const char* name) const
{
    StatePath inside(text());
    const std::size_t length = std::strlen(text());
    std::snprintf(inside.text_.data() + length, inside.text_.size() - length, "/%s", name);
    return inside;
}

int complain(const StatePath& path, const char* reason, int result)
{
    std::fprintf(stderr, "%s: %s\n", path.text(), reason);
    return result;
}

int complainOfSystem(const StatePath& path, int error)
{
    return complain(path, std::strerror(error), error == ENOMEM ? VEK_NO_MEMORY : VEK_IO_ERROR);
}

int openStateFolder(const StateEntry& entry, Descriptor& folder)
{
    folder = Descriptor(openat(entry.folder, entry.name, O_RDONLY | O_DIRECTORY | kOpenFlags));
    if (!folder.isOpen()) {
        return errno == ENOENT ? VEK_NO_RESPONSE : complainOfSystem(entry.path, errno);
    }
    struct stat status = {};
    if (fstat(folder.number(), &status) != 0) {
        return complainOfSystem(entry.path, errno);
    }
    return checkRights(entry.path, status);
}

int makeStateFolder(const StateEntry& entry, Descriptor& folder)
{
    if (mkdirat(entry.folder, entry.name, kFolderMode) != 0 && errno != EEXIST) {
        return complainOfSystem(entry.path, errno);
    }
    const int result = openStateFolder(entry, folder);
    return result == VEK_NO_RESPONSE ? complainOfSystem(entry.path, ENOENT) : result;
}

int openStateFile(const StateEntry& entry, std::uint64_t size, Descriptor& file)
{
    struct stat status = {};
    const int result = openChecked(entry, O_RDWR, file, status);
    if (result != VEK_OK) {
        return result;
    }
    return static_cast<std::uint64_t>(status.st_size) == size
               ? VEK_OK
               : complain(entry.path, "is not of the size that the card needs", VEK_BAD_DATA);
}

int makeStateFile(const StateEntry& entry, std::uint64_t size, Descriptor& file)
{
    if (aboveLimit(size)) {
        return complainOfSystem(entry.path, EFBIG);
    }
    struct stat status = {};
    const int result = openChecked(entry, O_RDWR | O_CREAT, file, status);
    if (result != VEK_OK) {
        return result;
    }
    if (ftruncate(file.number(), 0) != 0 || ftruncate(file.number(), static_cast<off_t>(size)) != 0) {
        return complainOfSystem(entry.path, errno);
    }
    return VEK_OK;
}

std::uint64_t monotonicNanoseconds()
{
    constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * kNanosecondsPerSecond + static_cast<std::uint64_t>(now.tv_nsec);
}

int lockFile(int file, std::uint64_t patience)
{
    constexpr long kFirstPause = 1'000;
    constexpr long kLongestPause = 250'000;
    const std::uint64_t end = monotonicNanoseconds() + patience;
    long pause = kFirstPause;
    while (setLock(file, F_WRLCK) != 0) {
        if (errno != EAGAIN && errno != EACCES && errno != EINTR) {
            return VEK_IO_ERROR;
        }
        if (monotonicNanoseconds() >= end) {
            return VEK_TIMED_OUT;
        }
        const timespec duration{.tv_sec = 0, .tv_nsec = pause};
        nanosleep(&duration, nullptr);
        pause = std::min(2 * pause, kLongestPause);
    }
    return VEK_OK;
}

void unlockFile(int file)
{
    static_cast<void>(setLock(file, F_UNLCK));
}

}  // namespace vek
