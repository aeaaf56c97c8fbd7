#ifndef VEK_CARD_GAMMA_TABLE_H
#define VEK_CARD_GAMMA_TABLE_H

#include <cstdint>

#include "address_space.h"
#include "card/sparse_memory.h"
#include "drivers/gamma_table.h"

namespace vek
{

/// The gamma tables of a display controller as drivers/gamma_table.h lays them out. They come up passing everything on
/// as it is.
class GammaTable final : public AddressSpace
{
public:
    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// What holds the entries.
    SparseMemory& memory() { return flipped_; }

private:
    /// The entries, each with the bits inverted that are set after power-on: what nobody sets takes no host memory.
    SparseMemory flipped_{gamma_table::kSize};
};

}  // namespace vek

#endif
