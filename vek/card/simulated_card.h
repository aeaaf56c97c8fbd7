#ifndef VEK_CARD_SIMULATED_CARD_H
#define VEK_CARD_SIMULATED_CARD_H

#include <array>
#include <cstdint>
#include <span>

#include "card/address_window.h"
#include "card/amba_bus.h"
#include "card/axi_monitor.h"
#include "card/card_clock.h"
#include "card/card_facts.h"
#include "card/chip_facts.h"
#include "card/clock_unit.h"
#include "card/die.h"
#include "card/dp_controller.h"
#include "card/dp_phy.h"
#include "card/dp_sink.h"
#include "card/edp_backlight.h"
#include "card/feature_registers.h"
#include "card/gamma_table.h"
#include "card/hdmi_phy.h"
#include "card/i2c_board_buses.h"
#include "card/info_unit.h"
#include "card/mcu.h"
#include "card/monitor_ddc.h"
#include "card/output_routing.h"
#include "card/pci_configuration.h"
#include "card/power_unit.h"
#include "card/register_region.h"
#include "card/sensor_unit.h"
#include "card/sizes.h"
#include "card/sparse_memory.h"
#include "card/spi_nor_flash.h"
#include "card/vga_dac.h"
#include "card/zoom_video.h"
#include "drivers/clocks.h"
#include "drivers/feature_switches.h"
#include "drivers/power.h"
#include "drivers/sensors.h"

namespace vek
{

/// A card with one of the chips on it, as it stands after power-on and the driver's start. What is on the card speaks
/// to its other parts through address spaces only, so a part may be replaced by one with more behaviour of its own.
///
/// AMBA map: 0x01000000 the register region, 16 MiB; 0x20000000 the board's RAM, 1 MiB; 0x40000000 the first GiB of
/// video memory.
struct SimulatedCard {
    /// A card that the facts describe, but for the flash's image and the bits that are stuck.
    constexpr explicit SimulatedCard(const CardFacts& facts)
        : dpPhys{DpPhy(facts.sinks[0].attached()), DpPhy(facts.sinks[1].attached())},
          dpSinks{DpSink(facts.sinks[0], dpPhys[0]), DpSink(facts.sinks[1], dpPhys[1])},
          mcu(dpSinks[0], clock, facts.mcu),
          die(clock, facts.fanTurns),
          axiMonitor(clock, facts.chip.axiMonitor, facts.chip.clocks),
          clocks(facts.chip.clocks, die, &axiMonitor),
          sensors(die, facts.chip.process, facts.sensors),
          information(facts.chip, clocks, facts.monitors[0].edid),
          outputRouting(facts.routing),
          videoMemory(facts.chip.videoMemorySize),
          amba(std::to_array<AddressWindow>({
              {.base = 0x0100'0000, .length = kRegisterRegionSize, .target = &registers},
              {.base = 0x2000'0000, .length = kBoardRamSize, .target = &boardRam},
              {.base = 0x4000'0000, .length = kVideoMemoryWindowSize, .target = &videoMemory},
          })),
          pciConfiguration(facts.chip),
          i2c(facts.board, facts.chips, clock),
          ddc{DdcConnector(facts.monitors[0].edid), DdcConnector(facts.monitors[1].edid),
              DdcConnector(facts.monitors[2].edid), DdcConnector(facts.monitors[3].edid)},
          hdmiPhys{HdmiPhy(facts.monitors[0].attached), HdmiPhy(facts.monitors[1].attached)}
    {
    }

    // The bus points into its own card.
    SimulatedCard(const SimulatedCard&) = delete;
    SimulatedCard& operator=(const SimulatedCard&) = delete;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(clock, dpPhys, dpSinks, dpControllers, edpBacklight, mcu, die, axiMonitor, clocks, power, features,
              information, outputRouting, pciConfiguration, i2c, spi, zoomVideo, ddc, hdmiPhys, vgaDac);
    }

    /// Hands over the memories, each with a name: objects with a size() in bytes and an adopt() for their host memory.
    template <typename Visitor>
    void visitMemories(Visitor& visit)
    {
        visit("registers", registers.storage());
        visit("video-memory", videoMemory);
        visit("board-ram", boardRam);
        visit("crtc-registers", crtc);
        visit("gamma-table-0", gammaTables[0].memory());
        visit("gamma-table-1", gammaTables[1].memory());
        visit("gamma-table-2", gammaTables[2].memory());
        visit("gamma-table-3", gammaTables[3].memory());
        visit("flash", spi.array());
    }

    /// Windows of the AMBA bus that lead to memories in which bits may be stuck.
    static constexpr std::size_t kAmbaRegisters = 0;
    static constexpr std::size_t kAmbaVideoMemory = 2;

    static constexpr std::uint64_t kBoardRamSize = kMiB;
    static constexpr std::uint64_t kVideoMemoryWindowSize = kGiB;
    static constexpr std::uint64_t kCrtcRegisters = 4096;

    /// What the devices of the card tell the time by.
    HostClock clock;
    // As many as the largest chip has; on a smaller one no path leads to the last of them.
    std::array<DpPhy, 2> dpPhys;
    std::array<DpSink, 2> dpSinks;
    std::array<DpController, 2> dpControllers;
    EdpBacklight edpBacklight;
    Mcu mcu;
    Die die;
    AxiMonitor axiMonitor;
    ClockUnit clocks;
    SensorUnit sensors;
    PowerUnit power{clocks, die};
    FeatureRegisters features;
    InfoUnit information;
    OutputRoutingRegisters outputRouting;
    /// The devices in the register region.
    std::array<AddressWindow, 10> registerWindows = ascending<10>({{
        {.base = OutputRoutingRegisters::kBase, .length = OutputRoutingRegisters::kSize, .target = &outputRouting},
        {.base = zoom_video::kBase, .length = zoom_video::kSize, .target = &zoomVideo},
        {.base = mcu_mailbox::kBase, .length = mcu_mailbox::kSize, .target = mcu.mailbox()},
        {.base = Mcu::kResetControlBase, .length = Mcu::kResetControlSize, .target = mcu.resetControl()},
        {.base = axiMonitor.base(), .length = axi_monitor::kSize, .target = &axiMonitor},
        {.base = sensor_unit::kWindowBase, .length = sensor_unit::kWindowSize, .target = &sensors},
        {.base = clock_unit::kWindowBase, .length = clock_unit::kWindowSize, .target = &clocks},
        {.base = power_unit::kWindowBase, .length = power_unit::kWindowSize, .target = &power},
        {.base = feature_switches::kWindowBase, .length = feature_switches::kWindowSize, .target = &features},
        {.base = info_unit::kWindowBase, .length = info_unit::kWindowSize, .target = &information},
    }});
    RegisterRegion registers{registerWindows};
    SparseMemory videoMemory;
    SparseMemory boardRam{kBoardRamSize};
    SparseMemory crtc{kCrtcRegisters};
    AmbaBus amba;
    PciConfiguration pciConfiguration;
    BoardI2cBuses i2c;
    SpiNorFlash spi{clock};
    ZoomVideoPorts zoomVideo{clock, i2c.videoDecoder(0), i2c.videoDecoder(1)};
    // As many as the largest chip has; on a smaller one no path leads to the last of them.
    std::array<DdcConnector, 4> ddc;
    std::array<HdmiPhy, 2> hdmiPhys;
    std::array<GammaTable, 4> gammaTables;
    VgaDac vgaDac;
};

}  // namespace vek

#endif
