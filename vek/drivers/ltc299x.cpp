#include "drivers/ltc299x.h"

#include <array>

#include "drivers/i2c_transfer.h"
#include "vek.h"

namespace vek::ltc299x
{

int Registers::read(std::uint8_t index, std::uint8_t& value)
{
    return readI2c(bus_, device_, index, std::span(&value, 1));
}

int Registers::write(std::uint8_t index, std::uint8_t value)
{
    return writeI2c(bus_, device_, index, std::span(&value, 1));
}

int Registers::readData(std::uint8_t index, std::span<std::uint16_t> data)
{
    std::array<std::uint8_t, 2 * kMostData> bytes{};
    const int result = readI2c(bus_, device_, index, std::span(bytes).first(2 * data.size()));
    if (result == VEK_OK) {
        for (std::size_t at = 0; at < data.size(); ++at) {
            data[at] = static_cast<std::uint16_t>(bytes[2 * at] << 8 | bytes[2 * at + 1]);
        }
    }
    return result;
}

}  // namespace vek::ltc299x
