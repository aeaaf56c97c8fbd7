#include "card/spi_nor_flash.h"

#include <algorithm>

#include "vek.h"

namespace vek
{
namespace
{

using spi_nor::Opcode;
using spi_nor::Range;

constexpr std::uint8_t kIdleLine = 0xff;
constexpr std::size_t kAddressEnd = 4;  ///< An address follows the opcode's byte, dummy bytes the address.

/// Manufacturer, memory type, and capacity as a power of two (section 11.2.1).
constexpr std::array<std::uint8_t, SpiNorFlash::kIdSize> kJedecId{0xef, 0x40, 0x15};

/// What the flash says of itself (JESD216, revision 1.0): the header, the header of the basic flash parameter table,
/// and that table of 9 words at 0x10.
constexpr std::array<std::uint8_t, 0x10 + 9 * 4> kParameters{
    'S', 'F', 'D', 'P', 0x00, 0x01, 0x00, 0xff,      // revision 1.0, one parameter header
    0x00, 0x00, 0x01, 0x09, 0x10, 0x00, 0x00, 0xff,  // revision 1.0, 9 words at 0x000010
    0xe5, 0x20, 0x80, 0xff,                          // sectors of 4 KiB by 20h, pages of 64 bytes or more, 3 address
                                                     // bytes, reads by one line only
    0xff, 0xff, 0xff, 0x00,                          // number of the highest bit: 16 Mbit
    0x00, 0xff, 0x00, 0xff,                          // no reads by four lines
    0x00, 0xff, 0x00, 0xff,                          // no reads by two lines
    0xee, 0xff, 0xff, 0xff,                          // no commands by two or four lines
    0xff, 0xff, 0x00, 0xff,                          //
    0xff, 0xff, 0x00, 0xff,                          //
    0x0c, 0x20, 0x0f, 0x52,                          // erases of 2^12 bytes by 20h, 2^15 by 52h
    0x10, 0xd8, 0x00, 0xff,                          // and 2^16 by D8h
};

/// Bytes before the data of an instruction, its opcode included.
constexpr std::size_t headerSizeOf(Opcode opcode)
{
    constexpr std::size_t kDummy = 1;
    switch (opcode) {
        case Opcode::kPageProgram:
        case Opcode::kRead:
        case Opcode::kEraseSector:
        case Opcode::kEraseHalfBlock:
        case Opcode::kEraseBlock:
            return kAddressEnd;
        case Opcode::kFastRead:
        case Opcode::kReadSfdp:
            return kAddressEnd + kDummy;
        default:
            return 1;
    }
}

}  // namespace

void SpiNorFlash::endWriteThatIsDone()
{
    if (busy_ && clock_.nanoseconds() >= busyUntil_) {
        busy_ = false;
        writeEnabled_ = false;
    }
}

void SpiNorFlash::beBusyFor(std::uint64_t duration)
{
    busy_ = true;
    busyUntil_ = clock_.nanoseconds() + duration;
}

std::uint8_t SpiNorFlash::status()
{
    endWriteThatIsDone();
    return static_cast<std::uint8_t>(kept_ | (writeEnabled_ ? spi_nor::kStatusWriteEnabled : 0) |
                                     (busy_ ? spi_nor::kStatusBusy : 0));
}

void SpiNorFlash::select()
{
    selected_ = true;
    opcode_ = Opcode::kNone;
    headerSize_ = 1;
    headerTaken_ = 0;
    address_ = 0;
    dataTaken_ = 0;
}

void SpiNorFlash::takeOpcode(std::uint8_t byte)
{
    endWriteThatIsDone();
    opcode_ = static_cast<Opcode>(byte);
    if (busy_ && opcode_ != Opcode::kReadStatus) {
        opcode_ = Opcode::kNone;
    }
    headerSize_ = headerSizeOf(opcode_);
    if (opcode_ == Opcode::kPageProgram) {
        page_.fill(0xff);
    }
}

void SpiNorFlash::takeHeaderByte(std::uint8_t byte)
{
    if (headerTaken_ == 0) {
        takeOpcode(byte);
    } else if (headerTaken_ < kAddressEnd) {
        address_ = (address_ << 8 | byte) % spi_nor::kSize;
    }
    ++headerTaken_;
}

int SpiNorFlash::write(std::span<const std::uint8_t> bytes)
{
    if (!selected_) {
        return VEK_OK;
    }
    while (!bytes.empty() && !headerComplete()) {
        takeHeaderByte(bytes.front());
        bytes = bytes.subspan(1);
    }
    return bytes.empty() ? VEK_OK : takeData(bytes);
}

int SpiNorFlash::takeData(std::span<const std::uint8_t> bytes)
{
    if (dataTaken_ == 0) {
        firstData_ = bytes.front();
    }
    dataTaken_ += bytes.size();
    switch (opcode_) {
        case Opcode::kPageProgram:
            if (!array_.makeProgrammable()) {
                return VEK_NO_MEMORY;
            }
            takePageData(bytes);
            break;
        case Opcode::kRead:
        case Opcode::kFastRead:
        case Opcode::kReadSfdp:
            // It sends all the while.
            address_ = static_cast<std::uint32_t>((address_ + bytes.size()) % spi_nor::kSize);
            break;
        default:
            break;
    }
    return VEK_OK;
}

void SpiNorFlash::takePageData(std::span<const std::uint8_t> bytes)
{
    for (const std::uint8_t byte : bytes) {
        page_[address_ % spi_nor::kPageSize] = byte;
        const std::uint32_t page = address_ - address_ % spi_nor::kPageSize;
        address_ = page + (address_ + 1) % spi_nor::kPageSize;
    }
}

int SpiNorFlash::read(std::span<std::uint8_t> bytes)
{
    if (!selected_) {
        std::fill(bytes.begin(), bytes.end(), kIdleLine);
        return VEK_OK;
    }
    while (!bytes.empty() && !headerComplete()) {
        takeHeaderByte(0);
        bytes.front() = kIdleLine;
        bytes = bytes.subspan(1);
    }
    sendData(bytes);
    return VEK_OK;
}

void SpiNorFlash::sendData(std::span<std::uint8_t> bytes)
{
    switch (opcode_) {
        case Opcode::kReadStatus:
            std::fill(bytes.begin(), bytes.end(), status());
            break;
        case Opcode::kReadId:
            for (std::uint8_t& byte : bytes) {
                byte = kJedecId[address_];
                address_ = (address_ + 1) % std::uint32_t{kJedecId.size()};
            }
            break;
        case Opcode::kRead:
        case Opcode::kFastRead:
            sendArray(bytes);
            break;
        case Opcode::kReadSfdp:
            sendParameters(bytes);
            break;
        default:
            std::fill(bytes.begin(), bytes.end(), kIdleLine);
            // Bits after an instruction that ought to end void it, whatever they are.
            dataTaken_ += bytes.size();
            break;
    }
}

void SpiNorFlash::sendArray(std::span<std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const std::size_t count = std::min<std::size_t>(bytes.size(), spi_nor::kSize - address_);
        array_.read(address_, bytes.first(count));
        address_ = static_cast<std::uint32_t>((address_ + count) % spi_nor::kSize);
        bytes = bytes.subspan(count);
    }
}

void SpiNorFlash::sendParameters(std::span<std::uint8_t> bytes)
{
    for (std::uint8_t& byte : bytes) {
        byte = address_ < kParameters.size() ? kParameters[address_] : kIdleLine;
        address_ = (address_ + 1) % spi_nor::kSize;
    }
}

void SpiNorFlash::deselect()
{
    if (selected_ && headerTaken_ > 0 && headerComplete()) {
        execute();
    }
    selected_ = false;
}

void SpiNorFlash::execute()
{
    const bool bare = dataTaken_ == 0;
    switch (opcode_) {
        case Opcode::kWriteEnable:
        case Opcode::kWriteDisable:
            if (bare) {
                writeEnabled_ = opcode_ == Opcode::kWriteEnable;
            }
            break;
        case Opcode::kWriteStatus:
            writeStatus();
            break;
        case Opcode::kPageProgram:
            program();
            break;
        case Opcode::kEraseSector:
            erase(spi_nor::kSectorSize, kEraseSectorTime);
            break;
        case Opcode::kEraseHalfBlock:
            erase(spi_nor::kHalfBlockSize, kEraseHalfBlockTime);
            break;
        case Opcode::kEraseBlock:
            erase(spi_nor::kBlockSize, kEraseBlockTime);
            break;
        default:
            break;
    }
}

bool SpiNorFlash::changeable(const Range& range)
{
    return writeEnabled_ && !spi_nor::protectedBy(kept_).meets(range);
}

void SpiNorFlash::writeStatus()
{
    if (writeEnabled_ && dataTaken_ == 1) {
        kept_ = firstData_ & spi_nor::kStatusWritable;
        beBusyFor(kWriteStatusTime);
    }
}

void SpiNorFlash::program()
{
    const std::uint32_t first = address_ - address_ % spi_nor::kPageSize;
    if (dataTaken_ > 0 && changeable({first, first + spi_nor::kPageSize}) && array_.makeProgrammable()) {
        array_.program(first, page_);
        beBusyFor(kProgramTime);
    }
}

void SpiNorFlash::erase(std::uint32_t size, std::uint64_t duration)
{
    const std::uint32_t first = address_ - address_ % size;
    const Range range{first, first + size};
    if (dataTaken_ == 0 && changeable(range)) {
        array_.erase(range);
        beBusyFor(duration);
    }
}

}  // namespace vek
