#include "tovira_parse/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "guarded_open.h"

namespace
{

// Opening a FIFO waits for its other end unless told not to.
int openWithoutWaiting(const char* name, int flags)
{
    constexpr mode_t kNewFileMode = 0666;
    return guarded::open(name, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, kNewFileMode);
}

int closeKeepingErrno(int descriptor)
{
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return -1;
}

// A writer waits for a slow reader of a FIFO, and a signal ends it when the reader leaves.
bool hasOtherEnd(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) != 0 || S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode);
}

// A descriptor for writing to a file of its own, or -1 with errno set.
int openToWrite(const char* name)
{
    const int descriptor = openWithoutWaiting(name, O_WRONLY | O_CREAT | O_TRUNC);
    if (descriptor < 0) {
        return -1;
    }
    if (hasOtherEnd(descriptor)) {
        errno = EINVAL;
        return closeKeepingErrno(descriptor);
    }
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags < 0 || fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) != 0) {
        return closeKeepingErrno(descriptor);
    }
    return descriptor;
}

// The size of what can be read from the start to an end; -1 with errno set for a directory or a stream without an end.
off_t sizeOf(int descriptor)
{
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) {
        return -1;
    }
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        return -1;
    }
    const off_t size = lseek(descriptor, 0, SEEK_END);
    return size < 0 || lseek(descriptor, 0, SEEK_SET) < 0 ? -1 : size;
}

// The number of bytes read, fewer than `size` when the file has shrunk meanwhile; -1 with errno set on an error.
ssize_t readUpTo(int descriptor, char* buffer, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = read(descriptor, buffer + done, size - done);
        if (got == 0) {
            break;
        }
        if (got > 0) {
            done += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return static_cast<ssize_t>(done);
}

FileText readDescriptor(int descriptor, std::size_t limit)
{
    const off_t end = sizeOf(descriptor);
    if (end < 0) {
        return {};
    }
    const auto length = static_cast<std::size_t>(end);
    if (length > limit) {
        errno = EFBIG;
        return {};
    }
    HeapPointer<char> text(static_cast<char*>(malloc(length + 1)));
    if (text == nullptr) {
        return {.text = nullptr, .outOfMemory = true, .length = length, .size = 0};
    }
    const ssize_t got = readUpTo(descriptor, text.get(), length);
    if (got < 0) {
        return {};
    }
    text.get()[got] = '\0';
    return {.text = std::move(text), .outOfMemory = false, .length = length, .size = static_cast<std::size_t>(got)};
}

// What a stream that writes a file hands to its functions.
struct OpenedFile {
    int descriptor;
};

int descriptorOf(const void* cookie)
{
    return static_cast<const OpenedFile*>(cookie)->descriptor;
}

// Writes all of it, whatever interrupts that: the C library's own streams lose what they were about to write.
ssize_t writeWhole(void* cookie, const char* bytes, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t step = write(descriptorOf(cookie), bytes + done, size - done);
        if (step > 0) {
            done += static_cast<std::size_t>(step);
        } else if (step == 0 || errno != EINTR) {
            return 0;
        }
    }
    return static_cast<ssize_t>(done);
}

// A close that is interrupted has taken place all the same.
int closeWritten(void* cookie)
{
    const HeapPointer<OpenedFile> file(static_cast<OpenedFile*>(cookie));
    return file->descriptor < 0 || close(file->descriptor) == 0 || errno == EINTR ? 0 : -1;
}

}  // namespace

FILE* createFile(const char* name)
{
    // Without memory for a stream the file stays as it is: one is opened, and cut to nothing, when there is a stream.
    HeapPointer<OpenedFile> opened(static_cast<OpenedFile*>(malloc(sizeof(OpenedFile))));
    if (opened == nullptr) {
        return nullptr;
    }
    opened->descriptor = -1;
    FILE* const file =
        fopencookie(opened.get(), "wb", {.read = nullptr, .write = writeWhole, .seek = nullptr, .close = closeWritten});
    if (file == nullptr) {
        return nullptr;
    }
    OpenedFile& owned = *opened.release();
    owned.descriptor = openToWrite(name);
    if (owned.descriptor < 0) {
        const int reason = errno;
        fclose(file);
        errno = reason;
        return nullptr;
    }
    return file;
}

void closeCreatedFile(FILE* file, const char* name)
{
    const bool failedEarlier = ferror(file) != 0;
    if (fclose(file) != 0 || failedEarlier) {
        fprintf(stderr, "Write %s error: the file is not complete\n", name);
    }
}

void saveFile(const char* name, const void* contents, std::size_t size)
{
    FILE* const file = name == nullptr ? nullptr : createFile(name);
    if (file == nullptr) {
        return;
    }
    if (size > 0) {
        fwrite(contents, 1, size, file);
    }
    closeCreatedFile(file, name);
}

FileText readWholeFile(const char* name, std::size_t limit)
{
    // Left without waiting: some files of the kernel's are regular by name and still keep a reader waiting.
    const int descriptor = openWithoutWaiting(name, O_RDONLY);
    if (descriptor < 0) {
        return {};
    }
    FileText contents = readDescriptor(descriptor, limit);
    closeKeepingErrno(descriptor);
    return contents;
}
