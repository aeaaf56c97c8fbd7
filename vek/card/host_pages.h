#ifndef VEK_CARD_HOST_PAGES_H
#define VEK_CARD_HOST_PAGES_H

#include <cstdint>

namespace vek
{

/// Maps `size` bytes of anonymous host memory that read 0 and cost nothing until they are written, page by page.
/// Returns null when the host refuses. The mapping is the caller's.
unsigned char* mapHostPages(std::uint64_t size);

/// Gives a mapping back.
void unmapHostPages(unsigned char* base, std::uint64_t size);

/// Tells the host that `size` bytes at `start`, a part of such a mapping, are about to be written as a whole, so that
/// it may bring them in by huge pages.
void expectWholeWrite(unsigned char* start, std::uint64_t size);

}  // namespace vek

#endif
