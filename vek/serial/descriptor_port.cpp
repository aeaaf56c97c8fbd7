#include "serial/descriptor_port.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "vek.h"

namespace vek
{
namespace
{

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

bool wouldBlock()
{
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

}  // namespace

std::uint64_t DescriptorPort::now()
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * kNanosecondsPerSecond + static_cast<std::uint64_t>(time.tv_nsec);
}

/// Returns false when nothing has happened by the deadline. Whether it is the event, or the end of the line, shows at
/// the next attempt to read or write.
bool DescriptorPort::waitFor(short event, std::uint64_t deadline)
{
    pollfd request{.fd = descriptor_, .events = event, .revents = 0};
    for (;;) {
        const std::uint64_t time = now();
        const std::uint64_t left = deadline > time ? deadline - time : 0;
        const timespec timeout{.tv_sec = static_cast<time_t>(left / kNanosecondsPerSecond),
                               .tv_nsec = static_cast<long>(left % kNanosecondsPerSecond)};
        const int ready = ppoll(&request, 1, &timeout, nullptr);
        if (ready >= 0 || errno != EINTR) {
            return ready != 0;
        }
        if (left == 0) {
            return false;
        }
    }
}

int DescriptorPort::send(std::span<const std::uint8_t> bytes, std::uint64_t deadline)
{
    while (!bytes.empty()) {
        const ssize_t sent = write(descriptor_, bytes.data(), bytes.size());
        if (sent > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(sent));
        } else if (sent < 0 && !wouldBlock() && errno != EINTR) {
            return VEK_IO_ERROR;
        } else if (!waitFor(POLLOUT, deadline)) {
            return VEK_TIMED_OUT;
        }
    }
    return VEK_OK;
}

std::ptrdiff_t DescriptorPort::receive(std::span<std::uint8_t> bytes, std::uint64_t deadline)
{
    for (;;) {
        const ssize_t got = read(descriptor_, bytes.data(), bytes.size());
        if (got > 0) {
            return got;
        }
        // A terminal that waits for at least one byte has no end of file but the end of the line.
        if (got == 0 || (!wouldBlock() && errno != EINTR)) {
            return -1;
        }
        if (!waitFor(POLLIN, deadline)) {
            return 0;
        }
    }
}

}  // namespace vek
