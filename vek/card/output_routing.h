#ifndef VEK_CARD_OUTPUT_ROUTING_H
#define VEK_CARD_OUTPUT_ROUTING_H

#include <array>
#include <cstdint>

#include "address_space.h"
#include "drivers/output_routing.h"

namespace vek
{

/// The registers of the output multiplexer, which hold what is written: the routing register (drivers/output_routing.h)
/// and the long below it, which has no function.
class OutputRoutingRegisters final : public AddressSpace
{
public:
    /// Where the registers lie in the register region, and how many bytes they take.
    static constexpr std::uint64_t kBase = 0x020;
    static constexpr std::uint64_t kSize = 8;

    /// With the routing that the board comes up with.
    constexpr explicit OutputRoutingRegisters(std::uint32_t routing) : routing_(routing)
    {
        for (unsigned byte = 0; byte < output_routing::kRegisterWidth; ++byte) {
            bytes_[output_routing::kRegister - kBase + byte] = static_cast<unsigned char>(routing >> (8 * byte));
        }
    }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit.madeOf(routing_, [&] { visit(bytes_); });
    }

private:
    std::uint32_t routing_;
    std::array<unsigned char, kSize> bytes_{};
};

}  // namespace vek

#endif
