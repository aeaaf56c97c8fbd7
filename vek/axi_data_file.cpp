#include "axi_data_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace vek
{
namespace
{

constexpr const char* kFileName = "axiMonitorData";
constexpr const char* kNewFileName = ".axiMonitorData.new";
constexpr std::size_t kLongestFolderName = 31;
constexpr mode_t kNewFolderMode = 0777;
constexpr mode_t kNewFileMode = 0666;

bool isFolderName(const char* name)
{
    if (name == nullptr) {
        return false;
    }
    const std::string_view text(name, strnlen(name, kLongestFolderName + 1));
    return !text.empty() && text.size() <= kLongestFolderName && text != "." && text != ".." &&
           text.find('/') == std::string_view::npos;
}

/// Whether a data file may take the place of what has its name: of nothing, or of a regular file that has no other
/// name.
bool mayReplace(int folder)
{
    struct stat status = {};
    if (fstatat(folder, kFileName, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT;
    }
    return S_ISREG(status.st_mode) && status.st_nlink == 1;
}

int closeAndFail(int descriptor)
{
    close(descriptor);
    return -1;
}

/// openat(2), made again when a signal interrupts it.
int openAgain(int folder, const char* name, int flags)
{
    int descriptor = -1;
    do {
        descriptor = openat(folder, name, flags, kNewFileMode);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

/// Creates the data file under a name of its own and gives it the right one with its first line in it. Nobody meets it
/// empty then, and a collector that is just about to end keeps the file that it has been writing to.
int createIn(int folder, std::string_view firstLine)
{
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_NOFOLLOW | O_CLOEXEC;
    if (!mayReplace(folder)) {
        return -1;
    }
    // What is left of a program that was killed at this.
    unlinkat(folder, kNewFileName, 0);
    const int descriptor = openAgain(folder, kNewFileName, kFlags);
    if (descriptor < 0) {
        return -1;
    }
    if (!appendLines(descriptor, firstLine) || renameat(folder, kNewFileName, folder, kFileName) != 0) {
        unlinkat(folder, kNewFileName, 0);
        return closeAndFail(descriptor);
    }
    return descriptor;
}

int openFolder(const char* name)
{
    if (!isFolderName(name) || (mkdir(name, kNewFolderMode) != 0 && errno != EEXIST)) {
        return -1;
    }
    return openAgain(AT_FDCWD, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

/// Takes away what the host had room for of lines that it did not take whole: it would be in the way of a reader.
void cutBack(int descriptor, off_t length)
{
    [[maybe_unused]] const int ignored = ftruncate(descriptor, length);
}

}  // namespace

int createAxiData(std::string_view firstLine)
{
    return createIn(AT_FDCWD, firstLine);
}

int createAxiDataIn(const char* folderName, std::string_view firstLine)
{
    const int folder = openFolder(folderName);
    if (folder < 0) {
        return -1;
    }
    const int descriptor = createIn(folder, firstLine);
    close(folder);
    return descriptor;
}

bool appendLines(int descriptor, std::string_view lines)
{
    const off_t before = lseek(descriptor, 0, SEEK_END);
    ssize_t written = 0;
    do {
        written = write(descriptor, lines.data(), lines.size());
    } while (written < 0 && errno == EINTR);
    const bool whole = written == static_cast<ssize_t>(lines.size());
    if (!whole && written > 0) {
        cutBack(descriptor, before);
    }
    return whole;
}

}  // namespace vek
