#include "serial/tty_port.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "vek.h"

namespace vek
{
namespace
{

/// What termios calls a rate, B0 for one that is not supported.
speed_t speedOf(int rate)
{
    switch (rate) {
        case 9600:
            return B9600;
        case 19200:
            return B19200;
        case 38400:
            return B38400;
        case 115200:
            return B115200;
        case 460800:
            return B460800;
        default:
            return B0;
    }
}

/// Raw, 8N1, no flow control, no heed to modem lines.
void makeRaw(termios& settings, speed_t speed)
{
    cfmakeraw(&settings);
    settings.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
    settings.c_cflag |= CREAD | CLOCAL;
    settings.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY);
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    cfsetispeed(&settings, speed);
    cfsetospeed(&settings, speed);
}

/// Whether a terminal has taken settings: tcsetattr() is content when it took one of them.
bool taken(const termios& wanted, const termios& found)
{
    constexpr tcflag_t kLineFlags = CSIZE | PARENB | CSTOPB | CRTSCTS;
    return cfgetospeed(&found) == cfgetospeed(&wanted) && cfgetispeed(&found) == cfgetispeed(&wanted) &&
           (found.c_cflag & kLineFlags) == (wanted.c_cflag & kLineFlags) && (found.c_lflag & (ICANON | ECHO)) == 0;
}

}  // namespace

bool supportsBaudRate(int rate)
{
    return speedOf(rate) != B0;
}

bool makeRaw(int descriptor, int rate)
{
    termios settings{};
    if (tcgetattr(descriptor, &settings) != 0) {
        return false;
    }
    makeRaw(settings, speedOf(rate));
    termios found{};
    return tcsetattr(descriptor, TCSANOW, &settings) == 0 && tcgetattr(descriptor, &found) == 0 &&
           taken(settings, found);
}

int TtyPort::setUp(int rate)
{
    // The lock comes first: the settings of a line that is in use stay as they are.
    if (flock(descriptor(), LOCK_EX | LOCK_NB) != 0 || tcgetattr(descriptor(), &before_) != 0 ||
        ioctl(descriptor(), TIOCEXCL) != 0) {
        return VEK_IO_ERROR;
    }
    if (!makeRaw(descriptor(), rate)) {
        close();
        return VEK_IO_ERROR;
    }
    tcflush(descriptor(), TCIOFLUSH);
    return VEK_OK;
}

int TtyPort::open(const char* path, int rate)
{
    if (!supportsBaudRate(rate)) {
        return VEK_BAD_ARGUMENT;
    }
    // Without waiting for a carrier.
    const int opened = ::open(path, O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (opened < 0) {
        return VEK_IO_ERROR;
    }
    setDescriptor(opened);
    const int result = setUp(rate);
    if (result != VEK_OK && descriptor() >= 0) {
        ::close(descriptor());
        setDescriptor(-1);
    }
    return result;
}

void TtyPort::close()
{
    if (descriptor() < 0) {
        return;
    }
    // What the line has not taken by now would keep close() waiting.
    tcflush(descriptor(), TCIOFLUSH);
    tcsetattr(descriptor(), TCSANOW, &before_);
    ioctl(descriptor(), TIOCNXCL);
    ::close(descriptor());
    setDescriptor(-1);
}

}  // namespace vek
