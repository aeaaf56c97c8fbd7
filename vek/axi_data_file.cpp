#include "axi_data_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

namespace vek
{
namespace
{

constexpr const char* kFileName = "axiMonitorData";
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

/// Whether a descriptor that was just opened leads to a file of its own, which is empty then.
bool isEmptiedFile(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && ftruncate(descriptor, 0) == 0;
}

int openIn(int folder)
{
    constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
    const int descriptor = openat(folder, kFileName, kFlags, kNewFileMode);
    if (descriptor >= 0 && !isEmptiedFile(descriptor)) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

/// Takes away what the host had room for of lines that it did not take whole: it would be in the way of a reader.
void cutBack(int descriptor, off_t length)
{
    [[maybe_unused]] const int ignored = ftruncate(descriptor, length);
}

}  // namespace

int openAxiData()
{
    return openIn(AT_FDCWD);
}

int openAxiDataIn(const char* folderName)
{
    if (!isFolderName(folderName) || (mkdir(folderName, kNewFolderMode) != 0 && errno != EEXIST)) {
        return -1;
    }
    const int folder = open(folderName, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) {
        return -1;
    }
    const int descriptor = openIn(folder);
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
