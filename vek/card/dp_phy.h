#ifndef VEK_CARD_DP_PHY_H
#define VEK_CARD_DP_PHY_H

#include <array>
#include <cstdint>

#include "address_space.h"
#include "drivers/dp_phy.h"

namespace vek
{

/// What a sink sees on the main link.
struct MainLink {
    std::uint8_t rate = 0;     ///< In units of 0.27 Gbit/s a lane; 0 when nothing is sent.
    std::uint8_t lanes = 0;    ///< Lanes that are sent on, counted from lane 0 to the first that is not.
    std::uint8_t pattern = 0;  ///< Training pattern, 0 for none.
    LaneDrives drives{};
};

/// A DisplayPort PHY as its register file says (drivers/dp_phy.h). Read-only registers refuse a write with
/// VEK_PROTECTED. The PLL locks at once.
class DpPhy final : public AddressSpace
{
public:
    /// A PHY after its reset. `attached`: a sink is plugged in.
    constexpr explicit DpPhy(bool attached) : attached_(attached) { reset(); }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    MainLink mainLink() const;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(registers_);
    }

private:
    static constexpr std::uint32_t kIdValue = 0xd120'0001;

    constexpr void reset()
    {
        registers_.fill(0);
        registers_[dp_phy::kId / dp_phy::kRegisterStep] = kIdValue;
        registers_[dp_phy::kStatus / dp_phy::kRegisterStep] = attached_ ? dp_phy::kStatusHotPlug : 0;
    }

    std::uint32_t at(std::uint64_t address) const { return registers_[address / dp_phy::kRegisterStep]; }
    bool locked() const { return (at(dp_phy::kStatus) & dp_phy::kStatusLocked) != 0; }
    void updateStatus();

    bool attached_;
    std::array<std::uint32_t, dp_phy::kRegisterCount> registers_{};
};

}  // namespace vek

#endif
