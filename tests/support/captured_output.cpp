#include "captured_output.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace
{

[[noreturn]] void fail(const char* operation)
{
    throw std::system_error(errno, std::generic_category(), operation);
}

}  // namespace

CapturedDescriptor::CapturedDescriptor(int descriptor, std::FILE* stream)
    : descriptor_(descriptor),
      stream_(stream),
      memory_(memfd_create("captured", MFD_CLOEXEC)),
      saved_(fcntl(descriptor, F_DUPFD_CLOEXEC, 0))
{
    std::fflush(stream_);
    if (memory_ < 0 || saved_ < 0 || dup2(memory_, descriptor_) < 0) {
        const int error = errno;
        close(memory_);
        close(saved_);
        errno = error;
        fail("capture a descriptor");
    }
}

CapturedDescriptor::~CapturedDescriptor()
{
    std::fflush(stream_);
    dup2(saved_, descriptor_);
    close(saved_);
    close(memory_);
}

std::string CapturedDescriptor::take()
{
    std::fflush(stream_);
    struct stat status = {};
    if (fstat(memory_, &status) != 0) {
        fail("fstat");
    }
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    if (pread(memory_, text.data(), text.size(), 0) != status.st_size) {
        fail("pread");
    }
    // The redirected descriptor shares this offset, so the next write starts at the beginning again.
    if (ftruncate(memory_, 0) != 0 || lseek(memory_, 0, SEEK_SET) != 0) {
        fail("empty the captured text");
    }
    return text;
}

CapturedOutput::CapturedOutput() : CapturedDescriptor(STDOUT_FILENO, stdout) {}

CapturedError::CapturedError() : CapturedDescriptor(STDERR_FILENO, stderr) {}
