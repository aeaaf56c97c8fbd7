#ifndef VEK_PATH_ACCESS_PATH_H
#define VEK_PATH_ACCESS_PATH_H

#include <array>
#include <cstddef>

#include "address_space.h"
#include "aux_channel.h"
#include "card_lock.h"
#include "drivers/driver_core.h"
#include "drivers/output_routing.h"
#include "i2c_bus.h"
#include "spi_bus.h"
#include "vek.h"

namespace vek
{

/// The buses or register files of a kind by their channel number: none is null before the last. When the first is null,
/// the path cannot reach that kind at all.
template <typename Target, std::size_t Most>
using Channels = std::array<Target*, Most>;

/// One way to reach a card: who the card is and which of its address spaces the path carries. A space that the path
/// cannot reach is null. The spaces belong to the path and live as long as the program.
struct AccessPath {
    AccessMode mode;                         ///< As get_s_type() reports it.
    int card;                                ///< Card index.
    unsigned deviceId;                       ///< Chip id of the card, 0x201 or 0x202.
    AddressSpace* registers;                 ///< Register region, by the addresses that the user of the path gives.
    BlockSpace* videoMemory;                 ///< Video memory.
    AddressSpace* kernelMemory;              ///< Kernel virtual memory of the host.
    AddressSpace* amba;                      ///< Internal AMBA bus.
    AddressSpace* crtc;                      ///< Register file of display controller 0, by index, bytes only.
    AddressSpace* pciConfiguration;          ///< PCI configuration space, aligned longs only.
    AddressSpace* registerRegion = nullptr;  ///< Register region, by offset, for the drivers.
    AddressSpace* sensors = nullptr;         ///< Register file of the sensor unit.
    AddressSpace* clocks = nullptr;          ///< Register file of the clock unit.
    AddressSpace* power = nullptr;           ///< Register file of the power unit.
    AddressSpace* features = nullptr;        ///< Register file of the feature switches.
    AddressSpace* information = nullptr;     ///< Register file of the information unit.
    AddressSpace* axiMonitor = nullptr;      ///< Register file of the AXI monitor; any thread may access it.
    DriverCore* driver = nullptr;            ///< The kernel driver; with it come all spaces but the optional displays'.
    Channels<I2cBus, 4> i2c;                 ///< The board's I2C channels.
    SpiBus* spi = nullptr;                   ///< The SPI bus with the board's flash.
    Channels<I2cBus, 4> ddc;                 ///< The display connectors' DDC channels.
    Channels<AddressSpace, 2> hdmiPhys;   ///< Register files of the HDMI outputs' PHYs; output n is on DDC channel n.
    DisplayUnits displays = kNoDisplays;  ///< Which display controllers and outputs the card has.
    Channels<AddressSpace, 4> gammaTables = {};  ///< Gamma tables of the display controllers.
    AddressSpace* vgaDac = nullptr;              ///< Registers of the VGA output's converter.

    Channels<AuxChannel, 2> dpAux = {};            ///< AUX channels of the DisplayPort outputs.
    Channels<AddressSpace, 2> dpPhys = {};         ///< Register files of their PHYs.
    Channels<AddressSpace, 2> dpControllers = {};  ///< Register blocks of their controllers.
    AddressSpace* edpBacklight = nullptr;          ///< Registers of the eDP panel's backlight controller.

    /// Whoever does several things to the card that belong together holds this meanwhile. Null when the card is this
    /// program's alone, or lies where others cannot be kept away.
    CardLock* lock = nullptr;
};

/// What a path could be opened to.
struct OpenedPath {
    int result;              ///< VEK_OK, or why there is no path
    const AccessPath* path;  ///< has a meaning with VEK_OK only
};

}  // namespace vek

#endif
