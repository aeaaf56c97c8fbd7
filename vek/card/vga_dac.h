#ifndef VEK_CARD_VGA_DAC_H
#define VEK_CARD_VGA_DAC_H

#include <array>
#include <cstdint>

#include "address_space.h"
#include "drivers/vga_dac.h"

namespace vek
{

/// The gain registers of a VGA converter (drivers/vga_dac.h). Only bytes are answered.
class VgaDac final : public AddressSpace
{
public:
    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(gains_);
    }

private:
    std::array<std::uint8_t, vga_dac::kRegisterCount> gains_{0xff, 0xff, 0xff};
};

}  // namespace vek

#endif
