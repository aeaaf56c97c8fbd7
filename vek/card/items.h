#ifndef VEK_CARD_ITEMS_H
#define VEK_CARD_ITEMS_H

#include <bit>
#include <cstdint>
#include <cstring>

namespace vek
{

static_assert(std::endian::native == std::endian::little, "items are stored as the host stores them");

template <typename Item>
std::uint64_t loadAs(const unsigned char* from)
{
    Item item;
    std::memcpy(&item, from, sizeof item);
    return item;
}

template <typename Item>
void storeAs(unsigned char* to, std::uint64_t value)
{
    const auto item = static_cast<Item>(value);
    std::memcpy(to, &item, sizeof item);
}

/// The little-endian item of `width` bytes (1, 2, 4 or 8) at `from`, zero-extended.
inline std::uint64_t loadItem(const unsigned char* from, unsigned width)
{
    switch (width) {
        case 1:
            return loadAs<std::uint8_t>(from);
        case 2:
            return loadAs<std::uint16_t>(from);
        case 4:
            return loadAs<std::uint32_t>(from);
        default:
            return loadAs<std::uint64_t>(from);
    }
}

/// Stores the low `width` bytes (1, 2, 4 or 8) of `value` at `to`, lowest byte first.
inline void storeItem(unsigned char* to, unsigned width, std::uint64_t value)
{
    switch (width) {
        case 1:
            storeAs<std::uint8_t>(to, value);
            break;
        case 2:
            storeAs<std::uint16_t>(to, value);
            break;
        case 4:
            storeAs<std::uint32_t>(to, value);
            break;
        default:
            storeAs<std::uint64_t>(to, value);
            break;
    }
}

}  // namespace vek

#endif
