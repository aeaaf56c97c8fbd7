#include "line_between.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <stdexcept>

namespace serial_test
{
namespace
{

constexpr std::uint64_t kSecond = 1'000 * kMillisecond;
constexpr std::uint64_t kBitsPerByte = 10;

std::uint64_t now()
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * kSecond + static_cast<std::uint64_t>(time.tv_nsec);
}

/** A descriptor that is not -1. */
int opened(int descriptor)
{
    if (descriptor < 0) {
        throw std::runtime_error("the line between host and board cannot be made");
    }
    return descriptor;
}

int makePseudoTerminal()
{
    const int master = opened(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    termios raw{};
    opened(tcgetattr(master, &raw));
    cfmakeraw(&raw);
    opened(tcsetattr(master, TCSANOW, &raw));
    opened(grantpt(master));
    opened(unlockpt(master));
    return master;
}

std::string nameOf(int master)
{
    std::array<char, 64> name{};
    opened(-ptsname_r(master, name.data(), name.size()));
    return name.data();
}

}  // namespace

LineBetween::LineBetween(const std::string& board, const Faults& faults, std::uint64_t seed,
                         std::uint64_t bitsPerSecond)
    : byteTime_(bitsPerSecond == 0 ? 0 : kBitsPerByte * kSecond / bitsPerSecond),
      host_(makePseudoTerminal()),
      board_(opened(open(board.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK))),
      end_(opened(eventfd(0, EFD_CLOEXEC))),
      toBoard_{.from = host_, .to = board_, .wire = Wire(faults, seed)},
      toHost_{.from = board_, .to = host_, .wire = Wire(faults, ~seed)}
{
    terminal_ = nameOf(host_);
    hostsEnd_ = opened(open(terminal_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    thread_ = std::thread([this] { run(); });
}

LineBetween::~LineBetween()
{
    eventfd_write(end_, 1);
    thread_.join();
    for (const int descriptor : {host_, hostsEnd_, board_, end_}) {
        close(descriptor);
    }
}

std::string LineBetween::ttyOption() const
{
    return terminal_.substr(std::string("/dev/").size()) + ",115200";
}

void LineBetween::run()
{
    while (waitForBytes()) {
        for (Direction* direction : {&toBoard_, &toHost_}) {
            accept(*direction);
            deliver(*direction);
        }
        faults_ = toBoard_.wire.faultsDone() + toHost_.wire.faultsDone();
    }
}

/** Waits until there are bytes at an end, or some arrive at the other one. @return whether to go on */
bool LineBetween::waitForBytes()
{
    std::uint64_t next = now() + kSecond;
    for (const Direction* direction : {&toBoard_, &toHost_}) {
        next = direction->wire.empty() ? next : std::min(next, direction->wire.nextTime());
    }
    const std::uint64_t time = now();
    const timespec timeout{.tv_sec = 0,
                           .tv_nsec = static_cast<long>(next > time ? std::min(next - time, kSecond - 1) : 0)};
    std::array<pollfd, 3> requests{{{.fd = end_, .events = POLLIN, .revents = 0},
                                    {.fd = host_, .events = POLLIN, .revents = 0},
                                    {.fd = board_, .events = POLLIN, .revents = 0}}};
    ppoll(requests.data(), requests.size(), &timeout, nullptr);
    return requests[0].revents == 0;
}

void LineBetween::accept(Direction& direction)
{
    std::array<std::uint8_t, 4096> bytes{};
    const ssize_t got = read(direction.from, bytes.data(), bytes.size());
    for (ssize_t index = 0; index < got; ++index) {
        const std::uint8_t byte = bytes[static_cast<std::size_t>(index)];
        direction.free = std::max(direction.free, now()) + byteTime_;
        direction.wire.send(byte, direction.free);
        if (&direction == &toBoard_ && decoder_.take(byte)) {
            ++requests_;
        }
    }
}

void LineBetween::deliver(Direction& direction) const
{
    while (!direction.wire.empty() && direction.wire.nextTime() <= now()) {
        const std::uint8_t byte = direction.wire.take();
        // What an end has no room for is lost, as on any line.
        static_cast<void>(!write(direction.to, &byte, 1));
    }
}

}  // namespace serial_test
