#ifndef VEK_SPI_BUS_H
#define VEK_SPI_BUS_H

#include <cstdint>
#include <span>

namespace vek
{

/// An SPI bus with one device on it, as its master drives it in mode 0: a transaction selects the device, sends and
/// receives runs of bytes, the high bit of each first, and deselects it. There is no acknowledge on such a bus: where
/// no device is, the master receives what the idle line delivers. Results are those of enum VekResult and speak of the
/// master only, VEK_IO_ERROR for one that failed.
class SpiBus
{
public:
    /// Pulls the chip select low.
    virtual void select() = 0;

    /// Sends bytes; what the device sends meanwhile is dropped.
    virtual int write(std::span<const std::uint8_t> bytes) = 0;

    /// Receives bytes; what is sent meanwhile has no meaning. A failed read leaves `bytes` as they were.
    virtual int read(std::span<std::uint8_t> bytes) = 0;

    /// Lets the chip select go high, which ends the command.
    virtual void deselect() = 0;

protected:
    constexpr SpiBus() = default;
    ~SpiBus() = default;
};

}  // namespace vek

#endif
