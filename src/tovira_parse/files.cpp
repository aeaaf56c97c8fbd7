#include "tovira_parse/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace
{

// Opening a FIFO waits for its other end unless told not to; the reads and writes that follow may wait as usual.
int openWithoutWaiting(const char* name, int flags)
{
    constexpr mode_t kNewFileMode = 0666;
    const int descriptor = open(name, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, kNewFileMode);
    if (descriptor >= 0) {
        fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
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

FileText readDescriptor(int descriptor)
{
    const off_t size = sizeOf(descriptor);
    if (size < 0) {
        return {nullptr, false};
    }
    auto* const text = static_cast<char*>(malloc(static_cast<std::size_t>(size) + 1));
    if (text == nullptr) {
        return {nullptr, true};
    }
    const ssize_t got = readUpTo(descriptor, text, static_cast<std::size_t>(size));
    if (got < 0) {
        const int reason = errno;
        free(text);
        errno = reason;
        return {nullptr, false};
    }
    text[got] = '\0';
    return {text, false};
}

}  // namespace

FILE* createFile(const char* name)
{
    const int descriptor = openWithoutWaiting(name, O_WRONLY | O_CREAT | O_TRUNC);
    return descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
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

FileText readWholeFile(const char* name)
{
    const int descriptor = openWithoutWaiting(name, O_RDONLY);
    if (descriptor < 0) {
        return {nullptr, false};
    }
    const FileText contents = readDescriptor(descriptor);
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return contents;
}
