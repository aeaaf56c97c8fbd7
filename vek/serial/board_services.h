#ifndef VEK_SERIAL_BOARD_SERVICES_H
#define VEK_SERIAL_BOARD_SERVICES_H

#include <cstddef>
#include <cstdint>

#include "drivers/output_routing.h"
#include "path/access_path.h"
#include "serial/message.h"

namespace vek
{

/// The numbers of the address spaces in a request. A kind of which there are several has its numbers in a row.
enum class SpaceNumber : std::uint8_t {
    kAmba = 0,
    kRegisterRegion = 1,
    kCrtc = 2,
    kSensors = 3,
    kClocks = 4,
    kPower = 5,
    kFeatures = 6,
    kAxiMonitor = 7,
    kVgaDac = 8,
    kEdpBacklight = 9,
    kHdmiPhys = 12,
    kDpPhys = 14,
    kDpControllers = 16,
    kGammaTables = 20,
};

constexpr std::size_t kSpaceNumbers = 24;

/// The numbers of the I2C buses in a request: the board's channels, then the DDC channels.
constexpr std::size_t kI2cBuses = 8;
constexpr std::size_t kFirstDdcBus = 4;

constexpr std::size_t kAuxChannels = 2;

/// Calls `visit` with the number and the member of each address space that a board may serve.
template <typename Path, typename Visitor>
void visitSpaces(Path& path, Visitor visit)
{
    const auto visitOne = [&](SpaceNumber number, auto& space) { visit(static_cast<std::size_t>(number), space); };
    const auto visitRow = [&](SpaceNumber first, auto& row) {
        for (std::size_t index = 0; index < row.size(); ++index) {
            visit(static_cast<std::size_t>(first) + index, row[index]);
        }
    };
    visitOne(SpaceNumber::kAmba, path.amba);
    visitOne(SpaceNumber::kRegisterRegion, path.registerRegion);
    visitOne(SpaceNumber::kCrtc, path.crtc);
    visitOne(SpaceNumber::kSensors, path.sensors);
    visitOne(SpaceNumber::kClocks, path.clocks);
    visitOne(SpaceNumber::kPower, path.power);
    visitOne(SpaceNumber::kFeatures, path.features);
    visitOne(SpaceNumber::kAxiMonitor, path.axiMonitor);
    visitOne(SpaceNumber::kVgaDac, path.vgaDac);
    visitOne(SpaceNumber::kEdpBacklight, path.edpBacklight);
    visitRow(SpaceNumber::kHdmiPhys, path.hdmiPhys);
    visitRow(SpaceNumber::kDpPhys, path.dpPhys);
    visitRow(SpaceNumber::kDpControllers, path.dpControllers);
    visitRow(SpaceNumber::kGammaTables, path.gammaTables);
}

/// Calls `visit` with the number and the member of each I2C bus that a board may serve.
template <typename Path, typename Visitor>
void visitI2cBuses(Path& path, Visitor visit)
{
    for (std::size_t channel = 0; channel < path.i2c.size(); ++channel) {
        visit(channel, path.i2c[channel]);
    }
    for (std::size_t channel = 0; channel < path.ddc.size(); ++channel) {
        visit(kFirstDdcBus + channel, path.ddc[channel]);
    }
}

/// Who a board is and what it serves: the body of its answer to a greeting.
struct BoardServices {
    std::uint16_t session = 0;   ///< The number of the session that the greeting has begun, never 0.
    std::uint16_t deviceId = 0;  ///< enum VekDeviceId
    std::uint8_t card = 0;       ///< Card index.
    std::uint32_t spaces = 0;    ///< A bit for each address space served, by SpaceNumber.
    std::uint8_t i2cBuses = 0;   ///< A bit for each I2C bus.
    std::uint8_t auxChannels = 0;
    bool spi = false;
    DisplayUnits displays = kNoDisplays;

    bool hasSpace(std::size_t number) const { return (spaces >> number & 1) != 0; }
    bool hasI2cBus(std::size_t number) const { return (i2cBuses >> number & 1) != 0; }
    bool hasAuxChannel(std::size_t number) const { return (auxChannels >> number & 1) != 0; }

    /// Whether it is the same board, of whatever session.
    bool sameBoard(const BoardServices& other) const;
};

/// What a path to a card has to offer.
BoardServices servicesOf(const AccessPath& card);

/// Appends the services to a message.
void putServices(MessageWriter& message, const BoardServices& services);

/// Takes the services from a message. Returns false when it is of another length or tells something that no board can
/// be: `services` has no meaning then.
bool takeServices(MessageReader& message, BoardServices& services);

}  // namespace vek

#endif
