/// What a fuzzed product may do to the machine: nothing outside one folder of its own, no waiting, no threads.
#ifndef FUZZ_SANDBOX_H
#define FUZZ_SANDBOX_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string_view>

namespace fuzz
{

/// The product runs inside one from its construction to its destruction, on the thread that made it; there is one at a
/// time. It begins with the product's variables as in a fresh process and an empty folder. The system calls that the
/// product makes (cmake lists them with the linker's --wrap) then behave like this:
///   - a file is opened by a plain name, in the scratch folder; a name with '/' in it, and "..", are refused, and so is
///     everything after a number of files that no single command opens;
///   - waiting ends at once, but the monotonic clock goes on by its time, and faster the more is waited;
///   - standard output and standard error are kept up to some length, standard input holds what is given here;
///   - memory beyond a few MiB is refused, mappings are taken back at the end;
///   - signal handlers are not installed, threads are not created.
/// What the product has opened it has to have closed at the end, and the terminal has to be as it was.
class Sandbox
{
public:
    /// `typed` is what can be read from standard input; it has to stay. With `terminal` standard input passes for one.
    explicit Sandbox(std::string_view typed = {}, bool terminal = false);
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    /// Puts a file into the scratch folder.
    static void addFile(const char* name, std::span<const std::uint8_t> contents);

    /// Whether the settings of the terminal on standard input, and the signals held back, are those of the beginning.
    static bool terminalIsAsBefore();

    /// Everything printed so far to standard output and standard error.
    std::string_view printed() const;

private:
    std::FILE* input_;
    std::FILE* output_;
    std::FILE* before_[3];
    std::uint64_t descriptors_;
};

}  // namespace fuzz

#endif
