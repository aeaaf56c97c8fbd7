#ifndef VEK_API_LONG_DUMP_H
#define VEK_API_LONG_DUMP_H

#include <cstddef>
#include <cstdint>

namespace vek
{

/// Prints `count` little-endian longs at `bytes` on standard output as dump_vram() describes it; `address` labels the
/// first.
void dumpLongs(const unsigned char* bytes, std::uint64_t address, std::size_t count);

}  // namespace vek

#endif
