#ifndef VEK_CARD_AMBA_BUS_H
#define VEK_CARD_AMBA_BUS_H

#include <array>
#include <cstdint>

#include "address_space.h"

namespace vek
{

/// A range of bus addresses behind which one address space answers.
struct AmbaWindow {
    std::uint64_t base;    ///< First bus address.
    std::uint64_t length;  ///< Bytes, at least 8.
    AddressSpace* target;  ///< Answers here; `base` is its address 0.
};

/// The card's internal AMBA bus: a decoder over windows. An access that does not lie wholly in one window gets no
/// response.
class AmbaBus final : public AddressSpace
{
public:
    static constexpr std::size_t kWindows = 3;

    constexpr explicit AmbaBus(const std::array<AmbaWindow, kWindows>& windows) : windows_(windows) {}

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

private:
    const AmbaWindow* windowOf(std::uint64_t address, unsigned width) const;

    std::array<AmbaWindow, kWindows> windows_;
};

}  // namespace vek

#endif
