#ifndef VEK_CARD_EEPROM_24C02_H
#define VEK_CARD_EEPROM_24C02_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "card/i2c_device.h"

namespace vek
{

/// A 24C02: 256 bytes of EEPROM in pages of 8. A write sets the address counter with its first byte and collects the
/// rest, which wrap round inside their page; the stop condition programs them, and during that write cycle the device
/// does not acknowledge its address. A repeated start drops what was collected. A read goes on from the counter, which
/// wraps from the last byte to the first.
class Eeprom24c02 final : public I2cDevice
{
public:
    static constexpr std::size_t kSize = 256;
    static constexpr std::size_t kPageSize = 8;
    using Contents = std::array<std::uint8_t, kSize>;

    constexpr explicit Eeprom24c02(const Contents& contents) : contents_(contents) {}

    void start() override;
    bool addressed(bool forReading) override;
    bool receive(std::uint8_t byte) override;
    std::uint8_t send() override;
    void stop() override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(contents_, page_, collected_, counter_, awaitsCounter_, busyTries_);
    }

private:
    /// A write cycle of 5 ms, in tries of the address of 0.11 ms each: nothing here knows of time.
    static constexpr int kWriteCycleTries = 45;

    Contents contents_;
    std::array<std::uint8_t, kPageSize> page_{};
    std::uint8_t collected_ = 0;  ///< Which bytes of the page were received, one bit each.
    std::uint8_t counter_ = 0;
    bool awaitsCounter_ = false;
    int busyTries_ = 0;
};

}  // namespace vek

#endif
