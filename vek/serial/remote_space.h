#ifndef VEK_SERIAL_REMOTE_SPACE_H
#define VEK_SERIAL_REMOTE_SPACE_H

#include "address_space.h"
#include "serial/serial_link.h"

namespace vek
{

/// An address space of the board at the other end of a serial line. Beside the results of the space itself there are
/// VEK_TIMED_OUT, VEK_IO_ERROR and VEK_BAD_DATA when the line or the board fails. A run that fails like that has moved
/// the longs before; a write may have taken effect all the same.
class RemoteSpace final : public BlockSpace
{
public:
    constexpr RemoteSpace(SerialLink& link, std::uint8_t number) : link_(link), number_(number) {}

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;
    int readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count) override;
    int writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count) override;
    int fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count) override;

private:
    int readBlock(std::uint64_t address, std::span<std::uint32_t> longs);
    int writeBlock(std::uint64_t address, std::span<const std::uint32_t> longs);
    int fillBlock(std::uint64_t address, std::uint32_t value, std::uint32_t count);
    SerialRequest addressed(serial_protocol::Operation operation, std::uint64_t address, std::size_t dataExpected);

    SerialLink& link_;
    std::uint8_t number_;
};

}  // namespace vek

#endif
