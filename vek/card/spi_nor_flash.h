#ifndef VEK_CARD_SPI_NOR_FLASH_H
#define VEK_CARD_SPI_NOR_FLASH_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "card/card_clock.h"
#include "card/nor_array.h"
#include "drivers/spi_nor.h"
#include "spi_bus.h"

namespace vek
{

/// The board's SPI bus with its flash (drivers/spi_nor.h), as shipped: erased and unprotected. The WP pin is high, so
/// nothing locks the status register. An instruction is carried out when the chip select goes high at its end, and not
/// at all when bytes are missing or too many, when it needs a write enable that was not given, when it would change a
/// protected part, or when it comes during a write; it leaves the write enable as it was then. Address bits above the
/// flash are ignored, and a read goes on from the last byte to the first.
///
/// Writes take less time than the datasheet's typical figures (section 12.6), so that a whole flash is done in a
/// second: a page 20 us for 0.7 ms, a sector 1 ms for 30 ms, 32 KiB 3 ms for 120 ms, a block 5 ms for 150 ms, the
/// status register 0.1 ms for 10 ms.
class SpiNorFlash final : public SpiBus
{
public:
    static constexpr std::size_t kIdSize = 3;  ///< Bytes that the flash identifies itself with.

    static constexpr std::uint64_t kProgramTime = 20'000;  ///< Nanoseconds, as all of these.
    static constexpr std::uint64_t kEraseSectorTime = 1'000'000;
    static constexpr std::uint64_t kEraseHalfBlockTime = 3'000'000;
    static constexpr std::uint64_t kEraseBlockTime = 5'000'000;
    static constexpr std::uint64_t kWriteStatusTime = 100'000;

    /// The clock has to live as long as the flash.
    constexpr explicit SpiNorFlash(const CardClock& clock) : clock_(clock) {}

    void select() override;

    /// Answers VEK_NO_MEMORY when the host has no memory for what is programmed.
    int write(std::span<const std::uint8_t> bytes) override;

    int read(std::span<std::uint8_t> bytes) override;
    void deselect() override;

    /// The memory cells.
    NorArray& array() { return array_; }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(array_, kept_, writeEnabled_, busy_, busyUntil_, selected_, dataTaken_, firstData_, page_);
        visit.upTo(opcode_, spi_nor::Opcode{0xff});
        visit.upTo(headerSize_, kMostHeader);
        visit.upTo(headerTaken_, kMostHeader);
        visit.upTo(address_, spi_nor::kSize - 1);
        visit.check(headerTaken_ <= headerSize_ && idAddressed());
    }

private:
    static constexpr std::size_t kMostHeader = 5;  ///< Opcode, address, dummy byte.

    /// Whether the address is one of an identification byte if these are being read.
    bool idAddressed() const { return opcode_ != spi_nor::Opcode::kReadId || address_ < kIdSize; }
    bool headerComplete() const { return headerTaken_ == headerSize_; }
    void takeHeaderByte(std::uint8_t byte);
    void takeOpcode(std::uint8_t byte);
    int takeData(std::span<const std::uint8_t> bytes);
    void takePageData(std::span<const std::uint8_t> bytes);
    void sendData(std::span<std::uint8_t> bytes);
    void sendArray(std::span<std::uint8_t> bytes);
    void sendParameters(std::span<std::uint8_t> bytes);
    void execute();
    void writeStatus();
    void program();
    void erase(std::uint32_t size, std::uint64_t duration);
    bool changeable(const spi_nor::Range& range);
    void beBusyFor(std::uint64_t duration);
    void endWriteThatIsDone();
    std::uint8_t status();

    const CardClock& clock_;
    NorArray array_;
    std::uint8_t kept_ = 0;  ///< The bits of the status register that a write sets.
    bool writeEnabled_ = false;
    bool busy_ = false;
    std::uint64_t busyUntil_ = 0;

    // The instruction that is under way.
    bool selected_ = false;
    spi_nor::Opcode opcode_ = spi_nor::Opcode::kNone;
    std::size_t headerSize_ = 0;  ///< The opcode's byte, the address, the dummy bytes.
    std::size_t headerTaken_ = 0;
    std::uint32_t address_ = 0;
    std::size_t dataTaken_ = 0;  ///< Bytes written after the header.
    std::uint8_t firstData_ = 0;
    std::array<std::uint8_t, spi_nor::kPageSize> page_{};
};

}  // namespace vek

#endif
