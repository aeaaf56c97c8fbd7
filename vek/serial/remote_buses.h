#ifndef VEK_SERIAL_REMOTE_BUSES_H
#define VEK_SERIAL_REMOTE_BUSES_H

#include "aux_channel.h"
#include "i2c_bus.h"
#include "serial/serial_link.h"
#include "spi_bus.h"
#include "vek.h"

namespace vek
{

/// An I2C bus of the board at the other end of a serial line. A start condition is sent with the step that follows it,
/// whose result is the first that tells of it. A step times out, too, when the line or the board fails.
class RemoteI2cBus final : public I2cBus
{
public:
    constexpr RemoteI2cBus(SerialLink& link, std::uint8_t number) : link_(link), number_(number) {}

    I2cStep start() override;
    I2cStep write(std::uint8_t byte) override;
    I2cByte read(bool acknowledge) override;
    void stop() override;
    I2cStep writeAll(std::span<const std::uint8_t> bytes) override;
    I2cStep readAll(std::span<std::uint8_t> bytes) override;

private:
    I2cStep run(std::uint8_t flags, std::span<const std::uint8_t> written, std::span<std::uint8_t> read);

    SerialLink& link_;
    std::uint8_t number_;
    bool startPending_ = false;
};

/// An AUX channel of the board at the other end of a serial line.
class RemoteAuxChannel final : public AuxChannel
{
public:
    constexpr RemoteAuxChannel(SerialLink& link, std::uint8_t number) : link_(link), number_(number) {}

    AuxReply transact(const AuxRequest& request) override;

private:
    SerialLink& link_;
    std::uint8_t number_;
};

/// The SPI bus of the board at the other end of a serial line. The device is selected with the transfer that follows.
/// When deselecting fails, the next transfer is not made and reports that.
class RemoteSpiBus final : public SpiBus
{
public:
    constexpr explicit RemoteSpiBus(SerialLink& link) : link_(link) {}

    void select() override;
    int write(std::span<const std::uint8_t> bytes) override;
    int read(std::span<std::uint8_t> bytes) override;
    void deselect() override;

private:
    int run(std::uint8_t flags, std::span<const std::uint8_t> written, std::span<std::uint8_t> read);
    std::uint8_t takePendingFlags();
    int takeFailure();

    SerialLink& link_;
    bool selectPending_ = false;
    int failure_ = VEK_OK;
};

}  // namespace vek

#endif
