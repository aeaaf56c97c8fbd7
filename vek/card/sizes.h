#ifndef VEK_CARD_SIZES_H
#define VEK_CARD_SIZES_H

#include <cstdint>

namespace vek
{

constexpr std::uint64_t kKiB = 1024;
constexpr std::uint64_t kMiB = 1024 * kKiB;
constexpr std::uint64_t kGiB = 1024 * kMiB;

}  // namespace vek

#endif
