#include "serial/board_services.h"

#include <bit>

#include "vek.h"

namespace vek
{
namespace
{

constexpr std::uint8_t kMostControllers = 4;
constexpr std::uint8_t kMostHdmiOutputs = 2;
constexpr std::uint8_t kMostDpOutputs = 2;

/// A row of so many bits from bit `first` on.
constexpr std::uint32_t row(SpaceNumber first, unsigned count)
{
    return ((1U << count) - 1) << static_cast<unsigned>(first);
}

constexpr std::uint32_t bit(SpaceNumber number)
{
    return row(number, 1);
}

constexpr std::uint32_t kKnownSpaces = row(SpaceNumber::kAmba, 10) | row(SpaceNumber::kHdmiPhys, 2) |
                                       row(SpaceNumber::kDpPhys, 2) | row(SpaceNumber::kDpControllers, 2) |
                                       row(SpaceNumber::kGammaTables, 4);

/// Whether no channel is missing before the last one.
bool withoutGap(std::uint32_t map)
{
    return (map & (map + 1)) == 0;
}

/// The bits of a row of spaces, from bit 0 on.
std::uint32_t rowOf(std::uint32_t spaces, SpaceNumber first, unsigned count)
{
    return (spaces & row(first, count)) >> static_cast<unsigned>(first);
}

bool soundSpaces(std::uint32_t spaces)
{
    return (spaces & ~kKnownSpaces) == 0 && (spaces & bit(SpaceNumber::kAmba)) != 0 &&
           withoutGap(rowOf(spaces, SpaceNumber::kHdmiPhys, 2)) && withoutGap(rowOf(spaces, SpaceNumber::kDpPhys, 2)) &&
           withoutGap(rowOf(spaces, SpaceNumber::kDpControllers, 2)) &&
           withoutGap(rowOf(spaces, SpaceNumber::kGammaTables, 4));
}

bool soundDdc(std::int8_t channel, int channels)
{
    return channel >= kNoDdc && channel < channels;
}

bool soundDisplays(const BoardServices& services)
{
    const DisplayUnits& units = services.displays;
    const int ddcChannels = std::popcount(static_cast<unsigned>(services.i2cBuses) >> kFirstDdcBus);
    return units.controllers <= kMostControllers && units.hdmiOutputs <= kMostHdmiOutputs &&
           units.hdmiOutputs <= ddcChannels && units.dpOutputs <= kMostDpOutputs &&
           units.dpOutputs <= std::popcount(services.auxChannels) && soundDdc(units.vgaDdc, ddcChannels) &&
           soundDdc(units.dvoDdc, ddcChannels);
}

bool sound(const BoardServices& services)
{
    constexpr std::uint8_t kI2cChannels = (1U << kFirstDdcBus) - 1;
    return services.session != 0 && (services.deviceId == VEK_DEVICE_QZ201 || services.deviceId == VEK_DEVICE_QZ202) &&
           soundSpaces(services.spaces) && withoutGap(services.i2cBuses & kI2cChannels) &&
           withoutGap(static_cast<unsigned>(services.i2cBuses) >> kFirstDdcBus) &&
           services.auxChannels < 1U << kAuxChannels && withoutGap(services.auxChannels) && soundDisplays(services);
}

}  // namespace

bool BoardServices::sameBoard(const BoardServices& other) const
{
    const DisplayUnits& units = other.displays;
    return deviceId == other.deviceId && card == other.card && spaces == other.spaces && i2cBuses == other.i2cBuses &&
           auxChannels == other.auxChannels && spi == other.spi && displays.controllers == units.controllers &&
           displays.hdmiOutputs == units.hdmiOutputs && displays.dpOutputs == units.dpOutputs &&
           displays.vgaDdc == units.vgaDdc && displays.dvoDdc == units.dvoDdc;
}

BoardServices servicesOf(const AccessPath& card)
{
    BoardServices services{.deviceId = static_cast<std::uint16_t>(card.deviceId),
                           .card = static_cast<std::uint8_t>(card.card),
                           .spi = card.spi != nullptr,
                           .displays = card.displays};
    visitSpaces(card, [&](std::size_t number, const AddressSpace* space) {
        services.spaces |= (space == nullptr ? 0U : 1U) << number;
    });
    visitI2cBuses(card, [&](std::size_t number, const I2cBus* bus) {
        services.i2cBuses |= static_cast<std::uint8_t>((bus == nullptr ? 0U : 1U) << number);
    });
    for (std::size_t number = 0; number < card.dpAux.size(); ++number) {
        services.auxChannels |= static_cast<std::uint8_t>((card.dpAux[number] == nullptr ? 0U : 1U) << number);
    }
    return services;
}

void putServices(MessageWriter& message, const BoardServices& services)
{
    message.put16(services.session);
    message.put16(services.deviceId);
    message.put8(services.card);
    message.put32(services.spaces);
    message.put8(services.i2cBuses);
    message.put8(services.auxChannels);
    message.put8(services.spi ? 1 : 0);
    message.put8(services.displays.controllers);
    message.put8(services.displays.hdmiOutputs);
    message.put8(services.displays.dpOutputs);
    message.put8(static_cast<std::uint8_t>(services.displays.vgaDdc));
    message.put8(static_cast<std::uint8_t>(services.displays.dvoDdc));
}

bool takeServices(MessageReader& message, BoardServices& services)
{
    services.session = message.take16();
    services.deviceId = message.take16();
    services.card = message.take8();
    services.spaces = message.take32();
    services.i2cBuses = message.take8();
    services.auxChannels = message.take8();
    const std::uint8_t spi = message.take8();
    services.spi = spi == 1;
    services.displays.controllers = message.take8();
    services.displays.hdmiOutputs = message.take8();
    services.displays.dpOutputs = message.take8();
    services.displays.vgaDdc = static_cast<std::int8_t>(message.take8());
    services.displays.dvoDdc = static_cast<std::int8_t>(message.take8());
    return message.finished() && spi <= 1 && sound(services);
}

}  // namespace vek
