#ifndef VEK_SERIAL_DESCRIPTOR_PORT_H
#define VEK_SERIAL_DESCRIPTOR_PORT_H

#include "serial/serial_port.h"

namespace vek
{

/// A serial port on a descriptor of a terminal, which must not block. Whoever set it closes it.
class DescriptorPort : public SerialPort
{
public:
    constexpr DescriptorPort() = default;
    constexpr explicit DescriptorPort(int descriptor) : descriptor_(descriptor) {}

    std::uint64_t now() final;
    int send(std::span<const std::uint8_t> bytes, std::uint64_t deadline) final;
    std::ptrdiff_t receive(std::span<std::uint8_t> bytes, std::uint64_t deadline) final;

    /// -1 when there is none.
    int descriptor() const { return descriptor_; }

protected:
    ~DescriptorPort() = default;

    void setDescriptor(int descriptor) { descriptor_ = descriptor; }

private:
    bool waitFor(short event, std::uint64_t deadline);

    int descriptor_ = -1;
};

}  // namespace vek

#endif
