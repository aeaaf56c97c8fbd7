#ifndef VEK_HOST_FILE_H
#define VEK_HOST_FILE_H

#include <cstddef>

namespace vek
{

/// An open file of the host, closed at the end of its scope. Nothing here waits for another program, whatever the name
/// turns out to be, and links that a stranger may have laid are not followed (guarded_open.h).
class HostFile
{
public:
    /// Opens a regular file for reading. Anything else (a FIFO, a device) is refused, with errno EINVAL.
    static HostFile openToRead(const char* name);

    /// Creates a file, or empties the one that is there, for writing. A FIFO or a socket is refused, with errno EINVAL:
    /// its reader may be slow, and a signal would end the program when it leaves.
    static HostFile openToWrite(const char* name);

    ~HostFile();
    HostFile(const HostFile&) = delete;
    HostFile& operator=(const HostFile&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }

    /// Reads up to `count` bytes, fewer only at the end of the file. Returns their number, or -1 on an error, with
    /// errno set.
    std::ptrdiff_t read(void* bytes, std::size_t count);

    /// Writes `count` bytes; false when not all of them could be written.
    bool write(const void* bytes, std::size_t count);

    /// Closes the file; false when the host reports only now that something was not written.
    bool close();

private:
    explicit HostFile(int descriptor) : descriptor_(descriptor) {}

    int descriptor_;
};

}  // namespace vek

#endif
