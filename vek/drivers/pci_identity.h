#ifndef VEK_DRIVERS_PCI_IDENTITY_H
#define VEK_DRIVERS_PCI_IDENTITY_H

#include <cstdint>

#include "address_space.h"

namespace vek
{

/// Who a PCI function is (PCI Local Bus 3.0, section 6.2.1 and 6.2.4).
struct PciIdentity {
    unsigned vendor;
    unsigned device;
    unsigned revision;
    unsigned subsystemVendor;
    unsigned subsystem;
};

/// The width of a PCI Express link in lanes and its speed code (PCI Express Base 3.0, sections 7.8.6 and 7.8.8).
struct PcieLink {
    unsigned width;
    unsigned speed;  ///< 1: 2.5 GT/s, 2: 5, 3: 8, 4: 16, 5: 32.
    unsigned widestWidth;
    unsigned highestSpeed;
};

/// Both read a function's configuration space. Results are those of enum VekResult; the outputs have a meaning with
/// VEK_OK only.
int readPciIdentity(AddressSpace& configuration, PciIdentity& identity);

/// VEK_NOT_AVAILABLE when the function has no PCI Express capability.
int readPcieLink(AddressSpace& configuration, PcieLink& link);

/// Tenths of GT/s that a speed code stands for, 0 for an unknown one.
unsigned tenthsOfGigatransfers(unsigned speed);

}  // namespace vek

#endif
