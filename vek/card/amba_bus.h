#ifndef VEK_CARD_AMBA_BUS_H
#define VEK_CARD_AMBA_BUS_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "card/address_window.h"

namespace vek
{

/// The card's internal AMBA bus: a decoder over windows. An access that does not lie wholly in one window gets no
/// response.
class AmbaBus final : public AddressSpace
{
public:
    static constexpr std::size_t kWindows = 3;

    constexpr explicit AmbaBus(const std::array<AddressWindow, kWindows>& windows) : windows_(windows) {}

    /// Puts something else behind a window.
    void setTarget(std::size_t window, AddressSpace* target)
    {
        windows_[window].target = target;
        withdrawPlainMemory();
    }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

private:
    const AddressWindow* windowOf(std::uint64_t address, unsigned width) const;
    void exposeMemoryBehind(const AddressWindow& window);

    std::array<AddressWindow, kWindows> windows_;
};

}  // namespace vek

#endif
