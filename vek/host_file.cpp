#include "host_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "guarded_open.h"

namespace vek
{
namespace
{

constexpr int kOpenFlags = O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
constexpr mode_t kNewFileMode = 0666;

/// Closes a descriptor that was opened but is of no use, keeping errno.
int reject(int descriptor, int error)
{
    ::close(descriptor);
    errno = error;
    return -1;
}

/// Makes an opened descriptor block as usual. O_NONBLOCK served for the open only.
int blocking(int descriptor)
{
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags < 0 || fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) < 0) {
        return reject(descriptor, errno);
    }
    return descriptor;
}

int openRegular(const char* name)
{
    const int descriptor = guarded::open(name, O_RDONLY | kOpenFlags, 0);
    if (descriptor < 0) {
        return -1;
    }
    struct stat status = {};
    if (fstat(descriptor, &status) < 0) {
        return reject(descriptor, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return reject(descriptor, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    // Left without waiting: some files of the kernel's are regular by name and still keep a reader waiting.
    return descriptor;
}

int create(const char* name)
{
    const int descriptor = guarded::open(name, O_WRONLY | O_CREAT | O_TRUNC | kOpenFlags, kNewFileMode);
    if (descriptor < 0) {
        return -1;
    }
    struct stat status = {};
    if (fstat(descriptor, &status) < 0) {
        return reject(descriptor, errno);
    }
    if (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)) {
        return reject(descriptor, EINVAL);
    }
    return blocking(descriptor);
}

}  // namespace

HostFile HostFile::openToRead(const char* name)
{
    return HostFile(openRegular(name));
}

HostFile HostFile::openToWrite(const char* name)
{
    return HostFile(create(name));
}

HostFile::~HostFile()
{
    close();
}

std::ptrdiff_t HostFile::read(void* bytes, std::size_t count)
{
    auto* to = static_cast<unsigned char*>(bytes);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t step = ::read(descriptor_, to + done, count - done);
        if (step == 0) {
            break;
        }
        if (step > 0) {
            done += static_cast<std::size_t>(step);
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return static_cast<std::ptrdiff_t>(done);
}

bool HostFile::write(const void* bytes, std::size_t count)
{
    const auto* from = static_cast<const unsigned char*>(bytes);
    while (count > 0) {
        const ssize_t step = ::write(descriptor_, from, count);
        if (step > 0) {
            from += step;
            count -= static_cast<std::size_t>(step);
        } else if (step == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool HostFile::close()
{
    if (descriptor_ < 0) {
        return true;
    }
    const bool complete = ::close(descriptor_) == 0;
    descriptor_ = -1;
    return complete;
}

}  // namespace vek
