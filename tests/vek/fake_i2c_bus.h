/**
 * @file fake_i2c_bus.h
 * An I2C bus for tests of what drives one: it notes every step and fails where it is told to.
 */
#ifndef FAKE_I2C_BUS_H
#define FAKE_I2C_BUS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "i2c_bus.h"

/** A bus with one device, which answers to every address and sends 0x40, 0x41 and so on. */
class FakeI2cBus final : public vek::I2cBus
{
public:
    /** Steps so far: "S" for a start, "P" for a stop, "w" and the byte, "r+" and "r-" for reads with and without
        acknowledge. */
    std::vector<std::string> steps;

    int busyAddresses = 0;      /**< so many address bytes from now on are not acknowledged */
    int refusedAddress = -1;    /**< the address byte with this number, from 0, is not acknowledged */
    int refusedData = -1;       /**< the data byte with this number, from 0, is not acknowledged */
    std::size_t hangsAt = ~0UL; /**< the step with this number, from 0, and all later ones but stops time out */

    vek::I2cStep start() override
    {
        addressFollows_ = true;
        return step("S");
    }

    vek::I2cStep write(std::uint8_t byte) override
    {
        if (step(written(byte)) == vek::I2cStep::kTimedOut) {
            return vek::I2cStep::kTimedOut;
        }
        return acknowledges() ? vek::I2cStep::kDone : vek::I2cStep::kNotAcknowledged;
    }

    vek::I2cByte read(bool acknowledge) override { return {step(acknowledge ? "r+" : "r-"), next_++}; }

    void stop() override { steps.emplace_back("P"); }

private:
    static std::string written(std::uint8_t byte)
    {
        constexpr char kDigits[] = "0123456789abcdef";
        return {'w', kDigits[byte >> 4], kDigits[byte & 0xf]};
    }

    vek::I2cStep step(const std::string& text)
    {
        steps.push_back(text);
        return steps.size() > hangsAt ? vek::I2cStep::kTimedOut : vek::I2cStep::kDone;
    }

    bool acknowledges()
    {
        if (!addressFollows_) {
            return dataBytes_++ != refusedData;
        }
        addressFollows_ = false;
        if (busyAddresses > 0) {
            --busyAddresses;
            return false;
        }
        return addresses_++ != refusedAddress;
    }

    bool addressFollows_ = false;
    int addresses_ = 0;
    int dataBytes_ = 0;
    std::uint8_t next_ = 0x40;
};

/** The DDC of a display with any bytes for an EDID. */
class FakeDisplay final : public vek::I2cBus
{
public:
    explicit FakeDisplay(std::vector<std::uint8_t> edid) : edid_(std::move(edid)) {}

    bool hasSegmentPointer = true;
    int transactions = 0;                 /**< stop conditions */
    std::vector<std::uint8_t> segments{}; /**< what the segment pointer was set to, in order */

    vek::I2cStep start() override
    {
        target_ = Target::kAddress;
        return vek::I2cStep::kDone;
    }

    vek::I2cStep write(std::uint8_t byte) override
    {
        return take(byte) ? vek::I2cStep::kDone : vek::I2cStep::kNotAcknowledged;
    }

    vek::I2cByte read(bool /*acknowledge*/) override
    {
        const std::size_t at = segment_ * std::size_t{256} + offset_++;
        return {vek::I2cStep::kDone, at < edid_.size() ? edid_[at] : std::uint8_t{0xff}};
    }

    void stop() override
    {
        segment_ = 0;
        target_ = Target::kNone;
        ++transactions;
    }

private:
    enum class Target { kNone, kAddress, kSegment, kOffset };

    bool take(std::uint8_t byte)
    {
        switch (target_) {
            case Target::kAddress:
                return select(byte);
            case Target::kSegment:
                segment_ = byte;
                segments.push_back(byte);
                return true;
            case Target::kOffset:
                offset_ = byte;
                return true;
            default:
                return false;
        }
    }

    bool select(std::uint8_t address)
    {
        target_ = address == 0xa0 ? Target::kOffset : address == 0x60 ? Target::kSegment : Target::kNone;
        return !edid_.empty() && (address == 0xa0 || address == 0xa1 || (address == 0x60 && hasSegmentPointer));
    }

    std::vector<std::uint8_t> edid_;
    Target target_ = Target::kNone;
    std::uint8_t segment_ = 0;
    std::uint8_t offset_ = 0;
};

#endif
