#ifndef VEK_CARD_FACTS_HASH_H
#define VEK_CARD_FACTS_HASH_H

#include <cstdint>
#include <span>
#include <string_view>

namespace vek
{

/// A hash (FNV-1a) over facts.
class FactsHash
{
public:
    constexpr void add(std::uint64_t number)
    {
        for (std::size_t byte = 0; byte < sizeof number; ++byte) {
            addByte(static_cast<std::uint8_t>(number >> (8 * byte)));
        }
    }
    constexpr void add(std::string_view text)
    {
        add(text.size());
        for (const char character : text) {
            addByte(static_cast<std::uint8_t>(character));
        }
    }
    constexpr void add(std::span<const std::uint8_t> bytes)
    {
        add(bytes.size());
        for (const std::uint8_t byte : bytes) {
            addByte(byte);
        }
    }

    constexpr std::uint64_t value() const { return value_; }

private:
    constexpr void addByte(std::uint8_t byte) { value_ = (value_ ^ byte) * 0x100'0000'01b3; }

    std::uint64_t value_ = 0xcbf2'9ce4'8422'2325;
};

}  // namespace vek

#endif
