#include "path/serial_path.h"

#include <sys/random.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "serial/board_services.h"
#include "serial/remote_buses.h"
#include "serial/remote_space.h"
#include "serial/serial_link.h"
#include "serial/tty_port.h"
#include "vek.h"

namespace vek
{
namespace
{

template <typename Proxy, std::size_t... Numbers>
constexpr std::array<Proxy, sizeof...(Numbers)> proxies(SerialLink& link, std::index_sequence<Numbers...> /*numbers*/)
{
    return {Proxy(link, static_cast<std::uint8_t>(Numbers))...};
}

/// Everything that a board may serve.
struct RemoteCard {
    explicit RemoteCard(SerialLink& link)
        : spaces(proxies<RemoteSpace>(link, std::make_index_sequence<kSpaceNumbers>())),
          i2cBuses(proxies<RemoteI2cBus>(link, std::make_index_sequence<kI2cBuses>())),
          auxChannels(proxies<RemoteAuxChannel>(link, std::make_index_sequence<kAuxChannels>())),
          spi(link)
    {
    }

    std::array<RemoteSpace, kSpaceNumbers> spaces;
    std::array<RemoteI2cBus, kI2cBuses> i2cBuses;
    std::array<RemoteAuxChannel, kAuxChannels> auxChannels;
    RemoteSpiBus spi;
};

/// A line and the one that takes its place: the old one is in use until the board at the new one has answered.
struct Lines {
    std::array<TtyPort, 2> ports;
    std::size_t inUse = 0;
};

constinit Lines lines;
constinit SerialLink serialLink;
// Made when a line is opened for the first time: it would cost every start of the program its relocations.
constinit std::optional<RemoteCard> remoteCard;
constinit AccessPath serialPath{};

/// A number for a session that no session before is likely to have had.
std::uint32_t newNonce(SerialPort& port)
{
    std::uint32_t nonce = 0;
    if (getrandom(&nonce, sizeof nonce, GRND_NONBLOCK) != sizeof nonce) {
        nonce = static_cast<std::uint32_t>(port.now() / 1000);
    }
    return nonce;
}

/// A proxy when the board serves what stands behind it.
template <typename Target>
Target* servedOnly(bool served, Target& target)
{
    return served ? &target : nullptr;
}

void fillPath(const BoardServices& board)
{
    RemoteCard& remote = *remoteCard;
    serialPath.mode = VEK_ACCESS_SERIAL;
    serialPath.card = board.card;
    serialPath.deviceId = board.deviceId;
    visitSpaces(serialPath, [&](std::size_t number, AddressSpace*& space) {
        space = servedOnly(board.hasSpace(number), remote.spaces[number]);
    });
    visitI2cBuses(serialPath, [&](std::size_t number, I2cBus*& bus) {
        bus = servedOnly(board.hasI2cBus(number), remote.i2cBuses[number]);
    });
    for (std::size_t number = 0; number < kAuxChannels; ++number) {
        serialPath.dpAux[number] = servedOnly(board.hasAuxChannel(number), remote.auxChannels[number]);
    }
    serialPath.spi = servedOnly(board.spi, remote.spi);
    serialPath.displays = board.displays;
    // All addresses are those of the AMBA bus.
    RemoteSpace& amba = remote.spaces[static_cast<std::size_t>(SpaceNumber::kAmba)];
    serialPath.registers = &amba;
    serialPath.videoMemory = &amba;
}

}  // namespace

OpenedPath openSerialPath(const char* path, int baudRate)
{
    if (path == nullptr) {
        return {VEK_BAD_ARGUMENT, nullptr};
    }
    const std::size_t next = 1 - lines.inUse;
    TtyPort& port = lines.ports[next];
    int result = port.open(path, baudRate);
    if (result != VEK_OK) {
        return {result, nullptr};
    }
    SerialSession session;
    result = session.begin(port, baudRate, newNonce(port));
    if (result != VEK_OK) {
        port.close();
        return {result, nullptr};
    }
    if (!remoteCard) {
        remoteCard.emplace(serialLink);
    }
    serialLink.use(session);
    lines.ports[lines.inUse].close();
    lines.inUse = next;
    fillPath(session.board());
    return {VEK_OK, &serialPath};
}

void closeSerialPath()
{
    TtyPort& port = lines.ports[lines.inUse];
    if (port.descriptor() < 0) {
        return;
    }
    serialLink.use(SerialSession());
    port.close();
}

}  // namespace vek
