#ifndef VEK_PATH_MEM_PATH_H
#define VEK_PATH_MEM_PATH_H

#include <cstdint>

#include "path/access_path.h"

namespace vek
{

/// A stretch of physical memory.
struct PhysicalRange {
    std::uint64_t start;  ///< address
    std::uint64_t size;   ///< bytes; 0 leaves it out
};

/// Maps the register region and the video memory of a card through /dev/mem, or through the file that the environment
/// variable VEK_MEM_DEVICE names; that is heeded only by a program that has no more rights than whoever started it.
/// A mapping made before is given up on success only. At least one range must not be empty.
OpenedPath openMemPath(const PhysicalRange& registers, const PhysicalRange& videoMemory);

/// Gives up what openMemPath() has mapped.
void closeMemPath();

}  // namespace vek

#endif
