#ifndef VEK_CARD_FEATURE_REGISTERS_H
#define VEK_CARD_FEATURE_REGISTERS_H

#include <cstdint>

#include "address_space.h"

namespace vek
{

/// The registers of the feature switches (drivers/feature_switches.h); nothing is on at first.
class FeatureRegisters final : public AddressSpace
{
public:
    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(functions_, multiGpu_);
    }

private:
    std::uint32_t functions_ = 0;
    std::uint32_t multiGpu_ = 0;
};

}  // namespace vek

#endif
