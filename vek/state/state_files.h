#ifndef VEK_STATE_STATE_FILES_H
#define VEK_STATE_STATE_FILES_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace vek
{

/// An open file or folder of the host, closed at the end of its scope.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }

    /// Leaves the closing to the caller.
    int release();

private:
    int number_ = -1;
};

/// The name of a file of the state, for messages.
class StatePath
{
public:
    /// A folder as the user has given it.
    explicit StatePath(const char* folder);

    /// What lies in it.
    StatePath operator/(const char* name) const;

    const char* text() const { return text_.data(); }

private:
    std::array<char, 1024> text_;
};

/// Says on standard error what is wrong with a file of the state. Returns `result`.
int complain(const StatePath& path, const char* reason, int result);

/// Complains with what the system says. Returns the result that stands for it.
int complainOfSystem(const StatePath& path, int error);

/// What one lies in another: the descriptor of the folder, and the name of what is meant, to be opened and to be told.
struct StateEntry {
    int folder;        ///< AT_FDCWD for a path.
    const char* name;  ///< In the folder.
    StatePath path;
};

/// Opens a folder, which nobody but this user may own or write to. VEK_PROTECTED when others may, VEK_IO_ERROR for
/// anything else that is wrong, VEK_NO_RESPONSE, and no message, when there is none.
int openStateFolder(const StateEntry& entry, Descriptor& folder);

/// Makes the folder if there is none, for this user only, and opens it.
int makeStateFolder(const StateEntry& entry, Descriptor& folder);

/// Opens a regular file for reading and writing, which nobody but this user may own or write to, and of which there is
/// this one name only. Results as above; VEK_BAD_DATA when it is not of the size.
int openStateFile(const StateEntry& entry, std::uint64_t size, Descriptor& file);

/// Makes a file of a size, or empties one, which costs nothing until it is written.
int makeStateFile(const StateEntry& entry, std::uint64_t size, Descriptor& file);

/// Nanoseconds of the monotonic clock.
std::uint64_t monotonicNanoseconds();

/// How long others may keep a file locked until that is a failure, in nanoseconds.
constexpr std::uint64_t kLockPatience = 5'000'000'000;

/// Waits until nobody else has locked the file, and locks it as long as its descriptor is open. VEK_TIMED_OUT when it
/// stays locked.
int lockFile(int file, std::uint64_t patience = kLockPatience);

/// Ends the lock.
void unlockFile(int file);

}  // namespace vek

#endif
