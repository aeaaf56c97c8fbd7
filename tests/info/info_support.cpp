#include "info_support.h"

#include <fcntl.h>
#include <pthread.h>
#include <pty.h>
#include <stdio_ext.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "pty_console.h"
#include "vek.h"

namespace
{

std::function<void(unsigned int)> sleepWatch;
std::function<void(int, int, const termios&)> settingsWatch;
std::time_t stoppedTime = 0;
bool clockIsStopped = false;
bool threadsFail = false;
void* (*otherCollector)(void*) = nullptr;

void check(bool succeeded, const char* operation)
{
    if (!succeeded) {
        throw std::system_error(errno, std::generic_category(), operation);
    }
}

int fileOf(std::string_view bytes)
{
    const int file = memfd_create("input", MFD_CLOEXEC);
    check(file >= 0 && write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
              lseek(file, 0, SEEK_SET) == 0,
          "fill the input");
    return file;
}

std::pair<int, int> openTerminal(info_test::Delivery delivery)
{
    std::pair<int, int> ends;
    check(openpty(&ends.first, &ends.second, nullptr, nullptr, nullptr) == 0, "openpty");
    if (delivery == info_test::Delivery::kByKey) {
        termios settings{};
        check(tcgetattr(ends.second, &settings) == 0, "tcgetattr");
        settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG);
        check(tcsetattr(ends.second, TCSANOW, &settings) == 0, "tcsetattr");
    }
    return ends;
}

}  // namespace

// These stand in for the C library's.

extern "C" unsigned int sleep(unsigned int seconds)
{
    if (sleepWatch) {
        sleepWatch(seconds);
    }
    return 0;
}

extern "C" std::time_t time(std::time_t* result) noexcept
{
    const std::time_t now =
        clockIsStopped ? stoppedTime : std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    if (result != nullptr) {
        *result = now;
    }
    return now;
}

// The linker's --wrap gives these names.
extern "C" {
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument);
int __real_tcsetattr(int descriptor, int when, const termios* settings);
void* __real_vek_thread_qz202monitor(void* folderName);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument)
{
    return threadsFail ? EAGAIN : __real_pthread_create(thread, attributes, start, argument);
}

int __wrap_tcsetattr(int descriptor, int when, const termios* settings)
{
    if (settingsWatch) {
        settingsWatch(descriptor, when, *settings);
    }
    return __real_tcsetattr(descriptor, when, settings);
}

void* __wrap_vek_thread_qz202monitor(void* folderName)
{
    return otherCollector != nullptr ? otherCollector(folderName) : __real_vek_thread_qz202monitor(folderName);
}
}

namespace info_test
{

StandardInput::StandardInput(int descriptor) : saved_(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3))
{
    check(saved_ >= 0 && dup2(descriptor, STDIN_FILENO) == STDIN_FILENO, "redirect the input");
    __fpurge(stdin);
    clearerr(stdin);
}

StandardInput::~StandardInput()
{
    dup2(saved_, STDIN_FILENO);
    close(saved_);
    __fpurge(stdin);
    clearerr(stdin);
}

std::string StandardInput::rest()
{
    std::string bytes;
    for (int byte = getc(stdin); byte != EOF; byte = getc(stdin)) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

InputFile::InputFile(std::string_view bytes) : StandardInput(fileOf(bytes)) {}

Keyboard::Keyboard(Delivery delivery) : Keyboard(openTerminal(delivery)) {}

Keyboard::Keyboard(std::pair<int, int> ends)
    : StandardInput(ends.second), master_(ends.first), slave_(ends.second), settingsBefore_(settings())
{
}

Keyboard::~Keyboard()
{
    hangUp();
    close(slave_);
}

void Keyboard::type(std::string_view keys)
{
    check(write(master_, keys.data(), keys.size()) == static_cast<ssize_t>(keys.size()), "type");
    // A terminal that hands on lines shows that it has taken a key by its echo only.
    const bool echoes = (current().c_lflag & ECHO) != 0;
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    for (int waiting = 0; waiting < static_cast<int>(keys.size()); std::this_thread::yield()) {
        check(ioctl(echoes ? master_ : slave_, FIONREAD, &waiting) == 0, "FIONREAD");
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("the terminal does not take the keys");
        }
    }
    if (echoes) {
        std::array<char, 4096> echo{};
        check(read(master_, echo.data(), echo.size()) > 0, "read the echo");
    }
}

void Keyboard::hangUp()
{
    if (master_ >= 0) {
        close(std::exchange(master_, -1));
    }
}

bool Keyboard::isRaw() const
{
    const termios now = current();
    return (now.c_lflag & (ICANON | ECHO | ISIG)) == 0 && (now.c_oflag & OPOST) == 0;
}

std::string Keyboard::settings() const
{
    return describe(current());
}

termios Keyboard::current() const
{
    termios now{};
    check(tcgetattr(slave_, &now) == 0, "tcgetattr");
    return now;
}

SleepWatch::SleepWatch(std::function<void(unsigned int)> watch)
{
    sleepWatch = std::move(watch);
}

SleepWatch::~SleepWatch()
{
    sleepWatch = nullptr;
}

SettingsWatch::SettingsWatch(std::function<void(int, int, const termios&)> watch)
{
    settingsWatch = std::move(watch);
}

SettingsWatch::~SettingsWatch()
{
    settingsWatch = nullptr;
}

StoppedClock::StoppedClock(std::time_t now, const char* zone)
{
    stoppedTime = now;
    clockIsStopped = true;
    setenv("TZ", zone, 1);
    tzset();
}

StoppedClock::~StoppedClock()
{
    clockIsStopped = false;
    unsetenv("TZ");
    tzset();
}

ThreadFailure::ThreadFailure()
{
    threadsFail = true;
}

ThreadFailure::~ThreadFailure()
{
    threadsFail = false;
}

OtherCollector::OtherCollector(void* (*collector)(void*))
{
    otherCollector = collector;
}

OtherCollector::~OtherCollector()
{
    otherCollector = nullptr;
}

}  // namespace info_test
