#ifndef VEK_SERIAL_TTY_PORT_H
#define VEK_SERIAL_TTY_PORT_H

#include <termios.h>

#include "serial/descriptor_port.h"

namespace vek
{

/// Whether a serial line to a board may run at a rate.
bool supportsBaudRate(int rate);

/// A serial line of the host, raw, with 8 data bits, no parity, one stop bit and no flow control. While it is open
/// nobody else can open it who asks for the lock as this does, and nobody at all without privileges.
class TtyPort final : public DescriptorPort
{
public:
    constexpr TtyPort() = default;

    /// Opens a terminal device; the port must be closed. Nothing that has come before is received. Returns VEK_OK,
    /// VEK_BAD_ARGUMENT for a rate that is not supported, which opens nothing, or VEK_IO_ERROR: the device cannot be
    /// opened, is no terminal, is in use, or cannot run like that.
    int open(const char* path, int rate);

    /// Gives the line its settings back and closes it; also when it is closed or gone.
    void close();

private:
    int setUp(int rate);

    termios before_{};
};

/// Makes a terminal raw, as TtyPort has it. Returns false when it cannot be.
bool makeRaw(int descriptor, int rate);

}  // namespace vek

#endif
