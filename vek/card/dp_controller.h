#ifndef VEK_CARD_DP_CONTROLLER_H
#define VEK_CARD_DP_CONTROLLER_H

#include <array>
#include <cstdint>

#include "address_space.h"
#include "drivers/dp_controller.h"

namespace vek
{

/// A DisplayPort controller as its register block says (drivers/dp_controller.h). Read-only registers refuse a write
/// with VEK_PROTECTED.
class DpController final : public AddressSpace
{
public:
    /// A controller after its reset.
    constexpr DpController() { reset(); }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(registers_);
    }

private:
    static constexpr std::uint16_t kIdValue = 0xdc12;

    constexpr void reset()
    {
        registers_.fill(0);
        at(dp_controller::kId) = kIdValue;
    }

    constexpr std::uint16_t& at(std::uint64_t address) { return registers_[address / dp_controller::kRegisterStep]; }
    bool linkUp();

    std::array<std::uint16_t, dp_controller::kRegisterCount> registers_{};
};

}  // namespace vek

#endif
