#ifndef VEK_CARD_REGISTER_POINTER_DEVICE_H
#define VEK_CARD_REGISTER_POINTER_DEVICE_H

#include <cstdint>

#include "card/i2c_device.h"

namespace vek
{

/// An I2C device with byte registers: the first byte of a write sets a pointer, which then counts on with every byte
/// that is written or read, from the last register to the first.
class RegisterPointerDevice : public I2cDevice
{
public:
    bool addressed(bool forReading) final
    {
        awaitsPointer_ = !forReading;
        beginTransfer();
        return true;
    }

    bool receive(std::uint8_t byte) final
    {
        if (awaitsPointer_) {
            pointer_ = byte & mask_;
            awaitsPointer_ = false;
        } else {
            writeRegister(take(), byte);
        }
        return true;
    }

    std::uint8_t send() final { return readRegister(take()); }

protected:
    /// Hands over what changes here, as state/state_visitor.h says.
    template <typename Visitor>
    void visitPointer(Visitor& visit)
    {
        visit.upTo(pointer_, mask_);
        visit(awaitsPointer_);
    }

    /// `mask` is the highest register, one less than a power of two; higher bits of a pointer are ignored.
    constexpr explicit RegisterPointerDevice(std::uint8_t mask) : mask_(mask) {}
    ~RegisterPointerDevice() = default;

    /// The device was addressed: what it has measured since shows from now on, and nothing newer until the next time.
    virtual void beginTransfer() = 0;

    virtual std::uint8_t readRegister(std::uint8_t index) = 0;
    virtual void writeRegister(std::uint8_t index, std::uint8_t value) = 0;

private:
    std::uint8_t take()
    {
        const std::uint8_t taken = pointer_;
        pointer_ = (pointer_ + 1) & mask_;
        return taken;
    }

    std::uint8_t mask_;
    std::uint8_t pointer_ = 0;
    bool awaitsPointer_ = false;
};

}  // namespace vek

#endif
