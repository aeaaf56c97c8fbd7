// A board at the other end of a serial line: docs/serial-protocol.md with a simulated card behind it.

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "board/options.h"
#include "path/driver_path.h"
#include "serial/board_end.h"
#include "serial/descriptor_port.h"
#include "serial/tty_port.h"
#include "vek.h"

namespace vek
{
namespace
{

/// How long a host may leave a reply unread before it is dropped.
constexpr std::uint64_t kReplyNanoseconds = 2'000'000'000;

/// Between two attempts to open a line that has hung up.
constexpr int kReopenMilliseconds = 200;

/// The rate of a pseudo-terminal, which no line limits.
constexpr int kPtyRate = 115200;

/// Why serving has ended.
enum class Ending { kHangUp, kSignal };

class PortSink final : public ReplySink
{
public:
    explicit PortSink(SerialPort& port) : port_(port) {}

    // A reply that does not get through is asked for again.
    void send(std::span<const std::uint8_t> frame) override { port_.send(frame, port_.now() + kReplyNanoseconds); }

private:
    SerialPort& port_;
};

/// A descriptor that is readable when the program has been asked to end. Returns -1 on failure.
int openEndSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    if (sigprocmask(SIG_BLOCK, &signals, nullptr) != 0) {
        return -1;
    }
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

/// Waits until one of the descriptors has something to tell, or for so many milliseconds, -1 for ever. Returns whether
/// it is the signals'.
bool waitForSignal(int signals, int port, int milliseconds)
{
    std::array<pollfd, 2> requests{
        {{.fd = signals, .events = POLLIN, .revents = 0}, {.fd = port, .events = POLLIN, .revents = 0}}};
    while (poll(requests.data(), requests.size(), milliseconds) < 0 && errno == EINTR) {
    }
    return requests[0].revents != 0;
}

Ending serve(DescriptorPort& port, BoardEnd& board, int signals)
{
    std::array<std::uint8_t, 4096> chunk;
    for (;;) {
        if (waitForSignal(signals, port.descriptor(), -1)) {
            return Ending::kSignal;
        }
        const std::ptrdiff_t got = port.receive(chunk, 0);
        if (got < 0) {
            return Ending::kHangUp;
        }
        board.take(std::span(chunk).first(static_cast<std::size_t>(got)));
    }
}

int report(const char* what)
{
    std::fprintf(stderr, "vek_board: %s: %s\n", what, std::strerror(errno));
    return EXIT_FAILURE;
}

/// The board's side of a pseudo-terminal.
class PtyPort final : public DescriptorPort
{
public:
    ~PtyPort()
    {
        close(hosts_);
        close(descriptor());
    }
    PtyPort() = default;
    PtyPort(const PtyPort&) = delete;
    PtyPort& operator=(const PtyPort&) = delete;

    /// Makes the pseudo-terminal, whose name the host opens. While `kept`, no host that leaves hangs up.
    bool make(bool kept)
    {
        setDescriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
        if (descriptor() < 0 || grantpt(descriptor()) != 0 || unlockpt(descriptor()) != 0 ||
            ptsname_r(descriptor(), name_.data(), name_.size()) != 0 || !makeRaw(descriptor(), kPtyRate)) {
            return false;
        }
        hosts_ = kept ? open(name_.data(), O_RDWR | O_NOCTTY | O_CLOEXEC) : -1;
        return !kept || hosts_ >= 0;
    }

    const char* name() const { return name_.data(); }

    /// Lets the next host in. A host asks that nobody else may open its line, which would last when it is killed while
    /// the line is kept open here; its lock, which other hosts respect, does not.
    void endExclusiveUse() const { ioctl(hosts_, TIOCNXCL); }

private:
    std::array<char, 64> name_{};
    int hosts_ = -1;
};

/// Tells which terminal is served, from now on.
void announce(const char* terminal)
{
    std::puts(terminal);
    std::fflush(stdout);
}

/// Where the board's replies go on a pseudo-terminal.
class PtySink final : public ReplySink
{
public:
    explicit PtySink(PtyPort& port) : port_(port), replies_(port) {}

    void send(std::span<const std::uint8_t> frame) override
    {
        port_.endExclusiveUse();
        replies_.send(frame);
    }

private:
    PtyPort& port_;
    PortSink replies_;
};

int serveOnPty(const BoardOptions& options, const AccessPath& card, int signals)
{
    PtyPort port;
    if (!port.make(!options.once)) {
        return report("pseudo-terminal");
    }
    announce(port.name());
    PtySink sink(port);
    BoardEnd board(card, sink);
    serve(port, board, signals);
    return EXIT_SUCCESS;
}

int serveOnTty(const BoardOptions& options, const AccessPath& card, int signals)
{
    TtyPort port;
    if (port.open(options.tty, options.baudRate) != VEK_OK) {
        return report(options.tty);
    }
    announce(options.tty);
    PortSink sink(port);
    BoardEnd board(card, sink);
    while (serve(port, board, signals) == Ending::kHangUp && !options.once) {
        do {
            port.close();
            if (waitForSignal(signals, -1, kReopenMilliseconds)) {
                return EXIT_SUCCESS;
            }
        } while (port.open(options.tty, options.baudRate) != VEK_OK);
    }
    port.close();
    return EXIT_SUCCESS;
}

int run(const BoardOptions& options)
{
    const int signals = openEndSignals();
    if (signals < 0) {
        return report("signals");
    }
    const auto [result, card] = openDriverPath(options.card);
    if (result != VEK_OK) {
        std::fprintf(stderr, "vek_board: card %d cannot be opened (%d)\n", options.card, result);
        return EXIT_FAILURE;
    }
    return options.tty == nullptr ? serveOnPty(options, *card, signals) : serveOnTty(options, *card, signals);
}

}  // namespace
}  // namespace vek

int main(int argc, char** argv)
{
    const vek::BoardOptions options = vek::parseBoardOptions(argc, argv);
    switch (options.action) {
        case vek::BoardOptions::Action::kHelp:
            vek::printBoardUsage(stdout, argv[0]);
            return EXIT_SUCCESS;
        case vek::BoardOptions::Action::kRefuse:
            vek::printBoardUsage(stderr, argv[0]);
            return EXIT_FAILURE;
        case vek::BoardOptions::Action::kFail:
            return EXIT_FAILURE;
        default:
            return vek::run(options);
    }
}
