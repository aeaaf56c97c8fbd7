#include "serial/message.h"

#include "vek.h"

namespace vek::serial_protocol
{

int resultOf(std::uint8_t status)
{
    const int result = -static_cast<int>(status);
    switch (result) {
        case VEK_OK:
        case VEK_IO_ERROR:
        case VEK_NO_RESPONSE:
        case VEK_NO_MEMORY:
        case VEK_BAD_ARGUMENT:
        case VEK_PROTECTED:
        case VEK_OUT_OF_RANGE:
        case VEK_NOT_AVAILABLE:
        case VEK_TIMED_OUT:
            return result;
        default:
            return VEK_BAD_DATA;
    }
}

}  // namespace vek::serial_protocol
