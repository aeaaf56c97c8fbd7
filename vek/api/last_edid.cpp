#include "api/last_edid.h"

#include <algorithm>
#include <cstddef>

#include "api/connection.h"
#include "drivers/ddc_edid.h"
#include "vek.h"

namespace vek
{
namespace
{

constinit EdidBuffer lastBytes{};
constinit std::size_t lastLength = 0;

}  // namespace

int fetchEdid(I2cBus& ddc)
{
    EdidBuffer bytes;
    std::size_t length = 0;
    const int result = [&] {
        const CardHold hold(openCardLock());
        return readEdid(ddc, bytes, length);
    }();
    if (result == VEK_OK) {
        std::copy_n(bytes.begin(), length, lastBytes.begin());
        lastLength = length;
    }
    return result;
}

std::span<std::uint8_t> lastEdid()
{
    return std::span(lastBytes).first(lastLength);
}

}  // namespace vek
