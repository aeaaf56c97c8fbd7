#ifndef VEK_SERIAL_SERIAL_PORT_H
#define VEK_SERIAL_SERIAL_PORT_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace vek
{

/// One end of a serial line: bytes in both directions, none of which need arrive, or arrive as they were sent.
class SerialPort
{
public:
    /// Nanoseconds of a clock that never goes back. Deadlines are in its time.
    virtual std::uint64_t now() = 0;

    /// Sends bytes. Returns VEK_OK, VEK_TIMED_OUT when the line has not taken all of them by the deadline, or
    /// VEK_IO_ERROR when the line is gone.
    virtual int send(std::span<const std::uint8_t> bytes, std::uint64_t deadline) = 0;

    /// Receives what has come, at least one byte, and waits for it if need be. Returns how many; 0 when none came by
    /// the deadline; below 0 when the line is gone.
    virtual std::ptrdiff_t receive(std::span<std::uint8_t> bytes, std::uint64_t deadline) = 0;

protected:
    constexpr SerialPort() = default;
    ~SerialPort() = default;
};

}  // namespace vek

#endif
