#ifndef VEK_PATH_ACCESS_PATH_H
#define VEK_PATH_ACCESS_PATH_H

#include "address_space.h"
#include "vek.h"

namespace vek
{

/// One way to reach a card: who the card is and which of its address spaces the path carries. A space that the path
/// cannot reach is null. The spaces belong to the path and live as long as the program.
struct AccessPath {
    AccessMode mode;                 ///< As get_s_type() reports it.
    int card;                        ///< Card index.
    unsigned deviceId;               ///< Chip id of the card, 0x201 or 0x202.
    AddressSpace* registers;         ///< Register region.
    BlockSpace* videoMemory;         ///< Video memory.
    AddressSpace* kernelMemory;      ///< Kernel virtual memory of the host.
    AddressSpace* amba;              ///< Internal AMBA bus.
    AddressSpace* crtc;              ///< Register file of display controller 0, by index, bytes only.
    AddressSpace* pciConfiguration;  ///< PCI configuration space, aligned longs only.
};

}  // namespace vek

#endif
