#ifndef VEK_CARD_REGISTER_REGION_H
#define VEK_CARD_REGISTER_REGION_H

#include <cstdint>
#include <span>

#include "card/address_window.h"
#include "card/chip_facts.h"
#include "card/sparse_memory.h"

namespace vek
{

/// The register region of a card: the registers of its devices in their windows, and storage that only holds what is
/// written everywhere else. An item that reaches beyond a window is taken apart into bytes, each for its own place.
class RegisterRegion final : public AddressSpace
{
public:
    /// The windows, ascending and without overlap, have to live as long as the region.
    constexpr explicit RegisterRegion(std::span<const AddressWindow> devices) : devices_(devices) {}

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// What lies between the devices, and below them, by the same addresses.
    SparseMemory& storage() { return storage_; }

private:
    const AddressWindow* deviceTouchedBy(std::uint64_t address, unsigned width) const;
    ReadResult readBytes(std::uint64_t address, unsigned width);
    int writeBytes(std::uint64_t address, unsigned width, std::uint64_t value);
    void exposeStorageAround(std::uint64_t address);

    std::span<const AddressWindow> devices_;
    SparseMemory storage_{kRegisterRegionSize};
};

}  // namespace vek

#endif
