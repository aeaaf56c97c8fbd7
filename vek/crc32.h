#ifndef VEK_CRC32_H
#define VEK_CRC32_H

#include <cstdint>
#include <span>

namespace vek
{

/// CRC-32 as IEEE 802.3 has it: polynomial 0x04c11db7, bits reflected, begun with and complemented by all ones. The
/// nine digits "123456789" give 0xcbf43926.
std::uint32_t crc32(std::span<const std::uint8_t> bytes);

}  // namespace vek

#endif
