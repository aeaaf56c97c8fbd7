#include "support/sandbox.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "support/product_state.h"
#include "support/require.h"

// The functions behind the wrapped names: the sanitizer's or the C library's.
extern "C" {
int __real_open(const char* name, int flags, ...);
int __real_openat(int folder, const char* name, int flags, ...);
int __real_mkdir(const char* name, mode_t mode);
int __real_fstatat(int folder, const char* name, struct stat* status, int flags);
int __real_unlinkat(int folder, const char* name, int flags);
int __real_renameat(int folder, const char* name, int newFolder, const char* newName);
int __real_clock_gettime(clockid_t clock, timespec* time);
int __real_clock_nanosleep(clockid_t clock, int flags, const timespec* duration, timespec* left);
int __real_nanosleep(const timespec* duration, timespec* left);
unsigned __real_sleep(unsigned seconds);
int __real_poll(pollfd* descriptors, nfds_t count, int timeout);
int __real_ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout, const sigset_t* signals);
int __real_select(int count, fd_set* in, fd_set* out, fd_set* exceptional, timeval* timeout);
int __real_sigaction(int signalNumber, const struct sigaction* action, struct sigaction* before);
int __real_pthread_sigmask(int how, const sigset_t* signals, sigset_t* before);
int __real_sigprocmask(int how, const sigset_t* signals, sigset_t* before);
int __real_tcgetattr(int descriptor, termios* settings);
int __real_tcsetattr(int descriptor, int when, const termios* settings);
int __real_isatty(int descriptor);
pid_t __real_tcgetpgrp(int descriptor);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument);
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_mmap(void* address, std::size_t length, int protection, int flags, int descriptor, off_t offset);
int __real_munmap(void* address, std::size_t length);
}

namespace
{

constexpr std::size_t kLargestAllocation = std::size_t{4} << 20U;
constexpr unsigned kMostFiles = 64;
constexpr std::size_t kMostMappings = 64;

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::uint64_t kNanosecondsPerLook = 1000;
constexpr std::uint64_t kWaitsAtTheirOwnPace = 256;

struct Mapping {
    void* address;
    std::size_t length;
};

// libFuzzer has threads of its own, which go on as they like.
thread_local bool inside = false;

bool terminalFitted = false;
// Of the terminal on standard input, and of a serial line.
termios terminalSettings;
termios lineSettings;
sigset_t heldBackSignals;
unsigned filesOpened = 0;
std::uint64_t clockNanoseconds = 0;
std::uint64_t waits = 0;
std::array<Mapping, kMostMappings> mappings;
std::size_t mappingCount = 0;
int scratch = -1;
std::string scratchName;

void removeScratch()
{
    rmdir(scratchName.c_str());
}

void makeScratch()
{
    const char* const temporary = getenv("TMPDIR");
    scratchName = std::string(temporary == nullptr ? "/tmp" : temporary) + "/fuzz-scratch-XXXXXX";
    fuzz::require(mkdtemp(scratchName.data()) != nullptr);
    scratch = __real_open(scratchName.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    fuzz::require(scratch >= 0);
    atexit(removeScratch);
}

// Empties a folder of what the product can have made: files, and folders with files.
void emptyFolder(int folder)
{
    DIR* const entries = fdopendir(folder);
    fuzz::require(entries != nullptr);
    while (const dirent* const entry = readdir(entries)) {
        if (strcmp(entry->d_name, ".") == 0 || strcmp(entry->d_name, "..") == 0) {
            continue;
        }
        if (unlinkat(folder, entry->d_name, 0) != 0) {
            emptyFolder(__real_openat(folder, entry->d_name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
            unlinkat(folder, entry->d_name, AT_REMOVEDIR);
        }
    }
    closedir(entries);
}

bool isPlainName(const char* name)
{
    return name != nullptr && strchr(name, '/') == nullptr && strcmp(name, "..") != 0;
}

// The folder that a name may be opened in, or -1 with errno set.
int folderFor(const char* name)
{
    if (!isPlainName(name)) {
        errno = EACCES;
        return -1;
    }
    if (filesOpened >= kMostFiles) {
        errno = EMFILE;
        return -1;
    }
    ++filesOpened;
    return scratch;
}

// The folder that a name in a folder may stand for, without its being opened: -1 with errno set when it may not.
int folderOf(int folder, const char* name)
{
    if (!isPlainName(name)) {
        errno = EACCES;
        return -1;
    }
    return folder == AT_FDCWD ? scratch : folder;
}

// Loops that wait for a fixed number of waits end early enough, and those that wait for a long time do, too.
void passTime(std::uint64_t nanoseconds)
{
    ++waits;
    clockNanoseconds += nanoseconds;
    if (waits > kWaitsAtTheirOwnPace) {
        clockNanoseconds += kNanosecondsPerSecond;
    }
}

void passTime(const timespec& duration)
{
    passTime(static_cast<std::uint64_t>(duration.tv_sec) * kNanosecondsPerSecond +
             static_cast<std::uint64_t>(duration.tv_nsec));
}

// As a shell leaves a terminal.
constexpr termios kSettingsAtStart = {.c_iflag = ICRNL | IXON,
                                      .c_oflag = OPOST | ONLCR,
                                      .c_cflag = CREAD | CS8 | B38400,
                                      .c_lflag = ECHO | ECHOE | ECHOK | ICANON | IEXTEN | ISIG,
                                      .c_line = 0,
                                      .c_cc = {},
                                      .c_ispeed = B38400,
                                      .c_ospeed = B38400};

bool areAtStart(const termios& settings)
{
    return memcmp(&settings, &kSettingsAtStart, sizeof settings) == 0;
}

termios& settingsOf(int descriptor)
{
    return descriptor == STDIN_FILENO ? terminalSettings : lineSettings;
}

int changeHeldBackSignals(int how, const sigset_t* signals, sigset_t* before)
{
    const sigset_t present = heldBackSignals;
    if (before != nullptr) {
        *before = present;
    }
    for (int number = 1; signals != nullptr && number <= SIGRTMAX; ++number) {
        const bool named = sigismember(signals, number) == 1;
        const bool held = how == SIG_BLOCK     ? named || sigismember(&present, number) == 1
                          : how == SIG_UNBLOCK ? !named && sigismember(&present, number) == 1
                                               : named;
        held ? sigaddset(&heldBackSignals, number) : sigdelset(&heldBackSignals, number);
    }
    return 0;
}

mode_t modeArgument(int flags, va_list arguments)
{
    return (flags & O_CREAT) != 0 ? static_cast<mode_t>(va_arg(arguments, int)) : 0;
}

std::array<char, 0x10000> kept;
std::size_t keptSize = 0;

// Takes everything and keeps the beginning.
ssize_t keepPrinted(void* /*cookie*/, const char* bytes, std::size_t size)
{
    const std::size_t count = std::min(size, kept.size() - keptSize);
    memcpy(kept.data() + keptSize, bytes, count);
    keptSize += count;
    return static_cast<ssize_t>(size);
}

struct TypedText {
    const char* next;
    std::size_t left;
};

TypedText typedText;

ssize_t readTyped(void* /*cookie*/, char* bytes, std::size_t size)
{
    const std::size_t count = std::min(size, typedText.left);
    std::copy_n(typedText.next, count, bytes);
    typedText.next += count;
    typedText.left -= count;
    return static_cast<ssize_t>(count);
}

// A bit for each of the descriptors that are open: what is not closed need not be the one that is opened next.
std::uint64_t openDescriptors()
{
    std::array<pollfd, 64> descriptors;
    for (std::size_t i = 0; i < descriptors.size(); ++i) {
        descriptors[i] = {.fd = static_cast<int>(i), .events = 0, .revents = 0};
    }
    fuzz::require(__real_poll(descriptors.data(), descriptors.size(), 0) >= 0);
    std::uint64_t open = 0;
    for (std::size_t i = 0; i < descriptors.size(); ++i) {
        open |= (descriptors[i].revents & POLLNVAL) == 0 ? std::uint64_t{1} << i : 0;
    }
    return open;
}

std::FILE* openSink()
{
    return fopencookie(nullptr, "w", {.read = nullptr, .write = keepPrinted, .seek = nullptr, .close = nullptr});
}

std::FILE* openTyped()
{
    return fopencookie(nullptr, "r", {.read = readTyped, .write = nullptr, .seek = nullptr, .close = nullptr});
}

}  // namespace

namespace fuzz
{

Sandbox::Sandbox(std::string_view typed, bool terminal) : before_{stdin, stdout, stderr}
{
    if (scratch < 0) {
        makeScratch();
    }
    resetProductState();
    terminalFitted = terminal;
    terminalSettings = kSettingsAtStart;
    lineSettings = kSettingsAtStart;
    sigemptyset(&heldBackSignals);
    filesOpened = 0;
    clockNanoseconds = kNanosecondsPerSecond;
    waits = 0;
    mappingCount = 0;
    keptSize = 0;
    typedText = {.next = typed.data(), .left = typed.size()};
    input_ = openTyped();
    output_ = openSink();
    require(input_ != nullptr && output_ != nullptr);
    descriptors_ = openDescriptors();
    stdin = input_;
    stdout = output_;
    stderr = output_;
    inside = true;
}

Sandbox::~Sandbox()
{
    inside = false;
    require(openDescriptors() == descriptors_);
    require(terminalIsAsBefore() && areAtStart(lineSettings));
    stdin = before_[0];
    stdout = before_[1];
    stderr = before_[2];
    fclose(input_);
    fclose(output_);
    for (std::size_t i = 0; i < mappingCount; ++i) {
        __real_munmap(mappings[i].address, mappings[i].length);
    }
    if (filesOpened > 0) {
        emptyFolder(__real_openat(scratch, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
}

std::string_view Sandbox::printed() const
{
    fflush(output_);
    return {kept.data(), keptSize};
}

bool Sandbox::terminalIsAsBefore()
{
    return areAtStart(terminalSettings) && sigisemptyset(&heldBackSignals) == 1;
}

void Sandbox::addFile(const char* name, std::span<const std::uint8_t> contents)
{
    constexpr mode_t kOwnersOnly = 0600;
    const int descriptor = __real_openat(scratch, name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kOwnersOnly);
    require(descriptor >= 0 && (contents.empty() || write(descriptor, contents.data(), contents.size()) ==
                                                        static_cast<ssize_t>(contents.size())));
    close(descriptor);
    ++filesOpened;
}

}  // namespace fuzz

// The sanitizer's settings: freed memory waits in a small quarantine, since thousands of inputs run in one process.
extern "C" const char* __asan_default_options()
{
    return "quarantine_size_mb=16";
}

extern "C" {

int __wrap_open(const char* name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    if (!inside) {
        return __real_open(name, flags, mode);
    }
    const int folder = folderFor(name);
    return folder < 0 ? -1 : __real_openat(folder, name, flags | O_NOFOLLOW, mode);
}

int __wrap_openat(int folder, const char* name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    if (!inside) {
        return __real_openat(folder, name, flags, mode);
    }
    const int permitted = folderFor(name);
    // A folder that the product has open is the scratch folder or lies in it.
    return permitted < 0 ? -1 : __real_openat(folder == AT_FDCWD ? permitted : folder, name, flags | O_NOFOLLOW, mode);
}

int __wrap_mkdir(const char* name, mode_t mode)
{
    if (!inside) {
        return __real_mkdir(name, mode);
    }
    const int folder = folderFor(name);
    return folder < 0 ? -1 : mkdirat(folder, name, mode);
}

int __wrap_fstatat(int folder, const char* name, struct stat* status, int flags)
{
    if (!inside) {
        return __real_fstatat(folder, name, status, flags);
    }
    const int permitted = folderOf(folder, name);
    return permitted < 0 ? -1 : __real_fstatat(permitted, name, status, flags);
}

int __wrap_unlinkat(int folder, const char* name, int flags)
{
    if (!inside) {
        return __real_unlinkat(folder, name, flags);
    }
    const int permitted = folderOf(folder, name);
    return permitted < 0 ? -1 : __real_unlinkat(permitted, name, flags);
}

int __wrap_renameat(int folder, const char* name, int newFolder, const char* newName)
{
    if (!inside) {
        return __real_renameat(folder, name, newFolder, newName);
    }
    const int permitted = folderOf(folder, name);
    const int newPermitted = folderOf(newFolder, newName);
    return permitted < 0 || newPermitted < 0 ? -1 : __real_renameat(permitted, name, newPermitted, newName);
}

int __wrap_clock_gettime(clockid_t clock, timespec* time)
{
    if (!inside || clock != CLOCK_MONOTONIC) {
        return __real_clock_gettime(clock, time);
    }
    clockNanoseconds += kNanosecondsPerLook;
    time->tv_sec = static_cast<time_t>(clockNanoseconds / kNanosecondsPerSecond);
    time->tv_nsec = static_cast<long>(clockNanoseconds % kNanosecondsPerSecond);
    return 0;
}

int __wrap_clock_nanosleep(clockid_t clock, int flags, const timespec* duration, timespec* left)
{
    if (!inside) {
        return __real_clock_nanosleep(clock, flags, duration, left);
    }
    passTime(*duration);
    return 0;
}

int __wrap_nanosleep(const timespec* duration, timespec* left)
{
    if (!inside) {
        return __real_nanosleep(duration, left);
    }
    passTime(*duration);
    return 0;
}

unsigned __wrap_sleep(unsigned seconds)
{
    if (!inside) {
        return __real_sleep(seconds);
    }
    passTime(seconds * kNanosecondsPerSecond);
    return 0;
}

int __wrap_poll(pollfd* descriptors, nfds_t count, int timeout)
{
    if (!inside) {
        return __real_poll(descriptors, count, timeout);
    }
    for (nfds_t i = 0; i < count; ++i) {
        descriptors[i].revents = descriptors[i].events;
    }
    return static_cast<int>(count);
}

int __wrap_ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout, const sigset_t* signals)
{
    if (!inside) {
        return __real_ppoll(descriptors, count, timeout, signals);
    }
    if (timeout == nullptr) {
        return __wrap_poll(descriptors, count, -1);
    }
    passTime(*timeout);
    return 0;
}

int __wrap_select(int count, fd_set* in, fd_set* out, fd_set* exceptional, timeval* timeout)
{
    if (!inside) {
        return __real_select(count, in, out, exceptional, timeout);
    }
    passTime(timeout == nullptr ? 0 : static_cast<std::uint64_t>(timeout->tv_usec) * 1000);
    return typedText.left > 0 ? 1 : 0;
}

int __wrap_sigaction(int signalNumber, const struct sigaction* action, struct sigaction* before)
{
    if (!inside) {
        return __real_sigaction(signalNumber, action, before);
    }
    if (before != nullptr) {
        *before = {};
    }
    return 0;
}

int __wrap_pthread_sigmask(int how, const sigset_t* signals, sigset_t* before)
{
    return inside ? changeHeldBackSignals(how, signals, before) : __real_pthread_sigmask(how, signals, before);
}

int __wrap_sigprocmask(int how, const sigset_t* signals, sigset_t* before)
{
    return inside ? changeHeldBackSignals(how, signals, before) : __real_sigprocmask(how, signals, before);
}

int __wrap_tcgetattr(int descriptor, termios* settings)
{
    if (!inside) {
        return __real_tcgetattr(descriptor, settings);
    }
    *settings = settingsOf(descriptor);
    return terminalFitted ? 0 : -1;
}

int __wrap_tcsetattr(int descriptor, int when, const termios* settings)
{
    if (!inside) {
        return __real_tcsetattr(descriptor, when, settings);
    }
    if (!terminalFitted) {
        return -1;
    }
    settingsOf(descriptor) = *settings;
    return 0;
}

int __wrap_isatty(int descriptor)
{
    if (!inside) {
        return __real_isatty(descriptor);
    }
    return terminalFitted ? 1 : 0;
}

pid_t __wrap_tcgetpgrp(int descriptor)
{
    return inside ? -1 : __real_tcgetpgrp(descriptor);
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument)
{
    return inside ? EAGAIN : __real_pthread_create(thread, attributes, start, argument);
}

void* __wrap_malloc(std::size_t size)
{
    if (inside && size > kLargestAllocation) {
        errno = ENOMEM;
        return nullptr;
    }
    return __real_malloc(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size)
{
    if (inside && size != 0 && count > kLargestAllocation / size) {
        errno = ENOMEM;
        return nullptr;
    }
    return __real_calloc(count, size);
}

void* __wrap_mmap(void* address, std::size_t length, int protection, int flags, int descriptor, off_t offset)
{
    if (!inside) {
        return __real_mmap(address, length, protection, flags, descriptor, offset);
    }
    if (mappingCount == mappings.size()) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    void* const pages = __real_mmap(address, length, protection, flags, descriptor, offset);
    if (pages != MAP_FAILED) {
        mappings[mappingCount++] = {.address = pages, .length = length};
    }
    return pages;
}

int __wrap_munmap(void* address, std::size_t length)
{
    if (inside) {
        auto* const end = mappings.begin() + mappingCount;
        auto* const left =
            std::remove_if(mappings.begin(), end, [=](const Mapping& m) { return m.address == address; });
        mappingCount = static_cast<std::size_t>(left - mappings.begin());
    }
    return __real_munmap(address, length);
}

}  // extern "C"
