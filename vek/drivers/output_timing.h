#ifndef VEK_DRIVERS_OUTPUT_TIMING_H
#define VEK_DRIVERS_OUTPUT_TIMING_H

#include <span>

#include "address_space.h"
#include "aux_channel.h"
#include "drivers/aux_transfer.h"
#include "drivers/output_routing.h"
#include "i2c_bus.h"
#include "pause.h"
#include "vek.h"

namespace vek
{

/// The display side of a card: how its outputs are routed, and where their displays' EDID is read.
struct Displays {
    AddressSpace& registers;           ///< The register region, with the routing register.
    DisplayUnits units;                ///< What the chip has.
    std::span<I2cBus* const> ddc;      ///< By DDC channel; null where the chip has none.
    std::span<AuxChannel* const> aux;  ///< By DisplayPort output; null where the chip has none.
    Pause& pause;                      ///< How retries on an AUX channel wait.
};

/// Reads the preferred timing of the display at an output that the chip has, whether it is fed or not. Results as of
/// outputTiming(); VEK_NOT_AVAILABLE when the display's EDID cannot be reached.
int attachedTiming(const Displays& displays, DisplayOutput output, VekDisplayMode& mode);

/// Reads the preferred timing of a DisplayPort sink's EDID. Results as of outputTiming().
int sinkTiming(AuxTransfer& aux, VekDisplayMode& mode);

/// Reads the timing that an output runs at: the preferred one of its display's EDID. `mode` is touched on success only.
/// Returns VEK_NO_RESPONSE when no display is attached or no controller of the chip feeds the output, VEK_BAD_DATA when
/// the EDID is damaged or has no timing, else what the bus, the AUX channel
/// or the register region answers.
int outputTiming(const Displays& displays, DisplayOutput output, VekDisplayMode& mode);

/// Reads the timing that a display controller runs at: that of the first output it feeds with a display attached, in
/// the order of DisplayOutput. Results as of outputTiming(), and VEK_BAD_ARGUMENT for a controller that the chip lacks.
int controllerTiming(const Displays& displays, int controller, VekDisplayMode& mode);

}  // namespace vek

#endif
