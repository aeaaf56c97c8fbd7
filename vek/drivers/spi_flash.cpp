#include "drivers/spi_flash.h"

#include <algorithm>
#include <array>

#include "vek.h"

namespace vek
{
namespace
{

using spi_nor::kBlockSize;
using spi_nor::kPageSize;
using spi_nor::kSectorSize;
using spi_nor::Opcode;
using spi_nor::Range;

constexpr std::uint8_t kErased = 0xff;

// Until after the datasheet's maximum (section 12.6): 3 ms for a page, 0.4 s for a sector, 1 s for a block, 15 ms for
// the status register.
constexpr Patience kProgramPatience{.eagerLooks = 1'000, .pausedLooks = 100, .interval = 100};
constexpr Patience kErasePatience{.eagerLooks = 1, .pausedLooks = 20'000, .interval = 100};
constexpr Patience kStatusPatience{.eagerLooks = 1, .pausedLooks = 1'000, .interval = 50};

/// A transaction, which ends with its scope.
class Selected
{
public:
    explicit Selected(SpiBus& bus) : bus_(bus) { bus_.select(); }
    ~Selected() { bus_.deselect(); }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

private:
    SpiBus& bus_;
};

std::array<std::uint8_t, 1> plain(Opcode opcode)
{
    return {static_cast<std::uint8_t>(opcode)};
}

std::array<std::uint8_t, 4> addressed(Opcode opcode, std::uint32_t address)
{
    return {static_cast<std::uint8_t>(opcode), static_cast<std::uint8_t>(address >> 16),
            static_cast<std::uint8_t>(address >> 8), static_cast<std::uint8_t>(address)};
}

std::uint32_t littleEndian(std::span<const std::uint8_t> bytes)
{
    std::uint32_t value = 0;
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte) {
        value = value << 8 | *byte;
    }
    return value;
}

bool all(std::span<const std::uint8_t> bytes, std::uint8_t value)
{
    return std::all_of(bytes.begin(), bytes.end(), [value](std::uint8_t byte) { return byte == value; });
}

/// The sectors that a range touches.
Range sectorsAround(std::uint32_t address, std::uint32_t size)
{
    return {address / kSectorSize * kSectorSize, (address + size + kSectorSize - 1) / kSectorSize * kSectorSize};
}

}  // namespace

int SpiFlash::send(std::span<const std::uint8_t> header, std::span<const std::uint8_t> data)
{
    const Selected selected(bus_);
    const int result = bus_.write(header);
    return result == VEK_OK && !data.empty() ? bus_.write(data) : result;
}

int SpiFlash::query(std::span<const std::uint8_t> header, std::span<std::uint8_t> data)
{
    const Selected selected(bus_);
    const int result = bus_.write(header);
    return result == VEK_OK ? bus_.read(data) : result;
}

int SpiFlash::readStatus(std::uint8_t& status)
{
    return query(plain(Opcode::kReadStatus), std::span(&status, 1));
}

int SpiFlash::readArray(std::uint32_t address, std::span<std::uint8_t> data)
{
    return query(addressed(Opcode::kRead, address), data);
}

int SpiFlash::awaitReady(const Patience& patience)
{
    return awaitReadiness(pause_, patience, [this]() -> Readiness {
        std::uint8_t status = 0;
        const int result = readStatus(status);
        return {result, (status & spi_nor::kStatusBusy) == 0};
    });
}

int SpiFlash::readId(bool& answered, std::uint32_t& size)
{
    std::array<std::uint8_t, 3> id{};
    const int result = query(plain(Opcode::kReadId), id);
    answered = result == VEK_OK && !all(id, 0x00) && !all(id, 0xff);
    size = id[2] < 32 ? std::uint32_t{1} << id[2] : 0;
    return result;
}

int SpiFlash::readSfdp(std::uint32_t address, std::span<std::uint8_t> data)
{
    const auto [opcode, high, middle, low] = addressed(Opcode::kReadSfdp, address);
    return query(std::array<std::uint8_t, 5>{opcode, high, middle, low, 0}, data);
}

/// Takes the size from the flash's parameters, if it has some. JESD216: the SFDP header (6.2), the first parameter
/// header (6.3), which belongs to the basic flash parameter table, and its second word (6.4.5).
int SpiFlash::readParameters(std::uint32_t& size)
{
    constexpr std::uint32_t kSignature = 0x5044'4653;  // "SFDP"
    constexpr std::uint32_t kExponentDensity = 0x8000'0000;
    std::array<std::uint8_t, 16> headers{};
    int result = readSfdp(0, headers);
    const std::span<const std::uint8_t> bytes(headers);
    if (result != VEK_OK || littleEndian(bytes.first(4)) != kSignature) {
        return result;
    }
    constexpr std::size_t kTablePointer = 12;
    constexpr std::uint32_t kDensityOffset = 4;
    std::array<std::uint8_t, 4> word{};
    result = readSfdp(littleEndian(bytes.subspan(kTablePointer, 3)) + kDensityOffset, word);
    if (result == VEK_OK) {
        const std::uint32_t highestBit = littleEndian(word);
        size = highestBit < kExponentDensity ? (highestBit + 1) / 8 : 0;
    }
    return result;
}

int SpiFlash::identify()
{
    bool answered = false;
    std::uint32_t size = 0;
    int result = readId(answered, size);
    if (result == VEK_OK && !answered) {
        // It may be at a write that another program began, unless the line is idle.
        constexpr std::uint8_t kIdleLine = 0xff;
        std::uint8_t status = 0;
        result = readStatus(status);
        if (result == VEK_OK && status != kIdleLine) {
            result = awaitReady(kErasePatience);
            if (result == VEK_OK) {
                result = readId(answered, size);
            }
        }
    }
    if (result == VEK_OK && answered) {
        result = readParameters(size);
    }
    if (result != VEK_OK) {
        return result;
    }
    return answered && size == spi_nor::kSize ? VEK_OK : VEK_NO_RESPONSE;
}

int SpiFlash::read(std::uint32_t address, std::span<std::uint8_t> data)
{
    const CardHold hold(lock_);
    const int result = identify();
    return result == VEK_OK ? readArray(address, data) : result;
}

/// Identifies the flash and makes sure that a range of it may be changed.
int SpiFlash::prepareToChange(const Range& range)
{
    const CardHold hold(lock_);
    std::uint8_t status = 0;
    int result = identify();
    if (result == VEK_OK) {
        result = readStatus(status);
    }
    if (result != VEK_OK) {
        return result;
    }
    return spi_nor::protectedBy(status).meets(range) ? VEK_PROTECTED : VEK_OK;
}

/// Sends a command that the flash takes after a write enable only and is busy with for a while.
int SpiFlash::writeCommand(std::span<const std::uint8_t> header, std::span<const std::uint8_t> data,
                           const Patience& patience)
{
    int result = send(plain(Opcode::kWriteEnable), {});
    if (result == VEK_OK) {
        result = send(header, data);
    }
    return result == VEK_OK ? awaitReady(patience) : result;
}

int SpiFlash::eraseUnit(std::uint32_t address, std::uint32_t size)
{
    const CardHold hold(lock_);
    const Opcode opcode = size == kBlockSize ? Opcode::kEraseBlock : Opcode::kEraseSector;
    int result = writeCommand(addressed(opcode, address), {}, kErasePatience);
    std::array<std::uint8_t, kSectorSize> found;
    for (std::uint32_t offset = 0; offset < size && result == VEK_OK; offset += kSectorSize) {
        result = readArray(address + offset, found);
        if (result == VEK_OK && !all(found, kErased)) {
            return VEK_BAD_DATA;
        }
    }
    return result;
}

int SpiFlash::erase(std::uint32_t address, std::uint32_t size)
{
    const Range sectors = sectorsAround(address, size);
    int result = prepareToChange(sectors);
    for (std::uint32_t at = sectors.first; at < sectors.end && result == VEK_OK;) {
        const bool block = at % kBlockSize == 0 && sectors.end - at >= kBlockSize;
        const std::uint32_t unit = block ? kBlockSize : kSectorSize;
        result = eraseUnit(at, unit);
        at += unit;
    }
    return result;
}

int SpiFlash::programPage(std::uint32_t address, std::span<const std::uint8_t> data)
{
    const CardHold hold(lock_);
    int result = VEK_OK;
    if (!all(data, kErased)) {
        result = writeCommand(addressed(Opcode::kPageProgram, address), data, kProgramPatience);
    }
    std::array<std::uint8_t, kPageSize> found;
    const auto bytes = std::span(found).first(data.size());
    if (result == VEK_OK) {
        result = readArray(address, bytes);
    }
    if (result != VEK_OK) {
        return result;
    }
    return std::equal(data.begin(), data.end(), bytes.begin()) ? VEK_OK : VEK_BAD_DATA;
}

int SpiFlash::program(std::uint32_t address, std::span<const std::uint8_t> data)
{
    int result = prepareToChange({address, address + static_cast<std::uint32_t>(data.size())});
    while (!data.empty() && result == VEK_OK) {
        const std::size_t count = std::min<std::size_t>(data.size(), kPageSize - address % kPageSize);
        result = programPage(address, data.first(count));
        address += static_cast<std::uint32_t>(count);
        data = data.subspan(count);
    }
    return result;
}

int SpiFlash::setBlockProtect(std::uint8_t bits)
{
    const CardHold hold(lock_);
    std::uint8_t status = 0;
    int result = identify();
    if (result == VEK_OK) {
        result = readStatus(status);
    }
    // The register wears out: it is not written with what it holds.
    if (result != VEK_OK || (status & spi_nor::kStatusBlockProtect) == bits) {
        return result;
    }
    constexpr std::uint8_t kKept = spi_nor::kStatusWritable & ~spi_nor::kStatusBlockProtect;
    const std::array<std::uint8_t, 1> wanted{static_cast<std::uint8_t>((status & kKept) | bits)};
    result = writeCommand(plain(Opcode::kWriteStatus), wanted, kStatusPatience);
    if (result == VEK_OK) {
        result = readStatus(status);
    }
    if (result != VEK_OK) {
        return result;
    }
    return (status & spi_nor::kStatusBlockProtect) == bits ? VEK_OK : VEK_PROTECTED;
}

}  // namespace vek
