#include <array>
#include <cstddef>
#include <span>

#include "api/channels.h"
#include "drivers/i2c_transfer.h"
#include "vek.h"

namespace
{

struct I2cText {
    int result;
    const char* text;
};

constexpr std::array<I2cText, 9> kI2cTexts{{
    {VEK_OK, "no error"},
    {VEK_NO_RESPONSE, "no acknowledge of the device address"},
    {VEK_NO_ACK_DATA, "no acknowledge of a data byte"},
    {VEK_NO_BUS, "the bus does not exist"},
    {VEK_TIMED_OUT, "time-out, the bus is held"},
    {VEK_BAD_ARGUMENT, "bad argument"},
    {VEK_NO_PATH, "no card is open"},
    {VEK_NOT_AVAILABLE, "the I2C buses cannot be reached this way"},
    {VEK_IO_ERROR, "the transfer failed"},
}};

bool describesBuffer(int count, const uint8_t* data)
{
    return count == 0 || (count > 0 && data != nullptr);
}

}  // namespace

int vekI2cRead(int channel, uint32_t device, uint32_t sub_address, int count, uint8_t* data)
{
    const auto [result, bus] = vek::findChannel<&vek::AccessPath::i2c>(channel, VEK_NO_BUS);
    if (result != VEK_OK) {
        return result;
    }
    if (!describesBuffer(count, data)) {
        return VEK_BAD_ARGUMENT;
    }
    const vek::CardHold hold(vek::openCardLock());
    return vek::readI2c(*bus, device, sub_address, std::span(data, static_cast<std::size_t>(count)));
}

int vekI2cWrite(int channel, uint32_t device, uint32_t sub_address, int count, const uint8_t* data)
{
    const auto [result, bus] = vek::findChannel<&vek::AccessPath::i2c>(channel, VEK_NO_BUS);
    if (result != VEK_OK) {
        return result;
    }
    if (!describesBuffer(count, data)) {
        return VEK_BAD_ARGUMENT;
    }
    const vek::CardHold hold(vek::openCardLock());
    return vek::writeI2c(*bus, device, sub_address, std::span(data, static_cast<std::size_t>(count)));
}

const char* vekI2cErrString(int error)
{
    for (const auto& [result, text] : kI2cTexts) {
        if (result == error) {
            return text;
        }
    }
    return "unknown error";
}
