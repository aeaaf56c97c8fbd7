#ifndef VEK_CARD_MONITOR_DDC_H
#define VEK_CARD_MONITOR_DDC_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "card/facts_hash.h"
#include "card/i2c_device.h"
#include "card/i2c_simulated_bus.h"
#include "drivers/ddc_edid.h"

namespace vek
{

/// A display's segment pointer (VESA E-DDC 1.3, section 2.2.6): one byte that can only be written and returns to 0 with
/// every stop condition.
class SegmentPointer final : public I2cDevice
{
public:
    bool addressed(bool forReading) override { return !forReading; }
    bool receive(std::uint8_t byte) override;
    std::uint8_t send() override;
    void stop() override { segment_ = 0; }

    std::uint8_t segment() const { return segment_; }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(segment_);
    }

private:
    std::uint8_t segment_ = 0;
};

/// A display's EDID memory: a window of 256 bytes that the segment pointer moves. Reading wraps round in the window;
/// past the end of the EDID it delivers 0xff. The memory is write-protected: it acknowledges the word offset only.
class EdidMemory final : public I2cDevice
{
public:
    /// Both must live as long as the memory.
    constexpr EdidMemory(std::span<const std::uint8_t> edid, const SegmentPointer& pointer)
        : edid_(edid), pointer_(pointer)
    {
    }

    bool addressed(bool forReading) override;
    bool receive(std::uint8_t byte) override;
    std::uint8_t send() override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(offset_, awaitsOffset_);
    }

private:
    std::span<const std::uint8_t> edid_;
    const SegmentPointer& pointer_;
    std::uint8_t offset_ = 0;
    bool awaitsOffset_ = false;
};

/// A DDC connector and what is plugged in there. A display with two EDID blocks or fewer has no segment pointer.
class DdcConnector
{
public:
    /// `edid`, of the display that is attached; empty when there is none.
    constexpr explicit DdcConnector(std::span<const std::uint8_t> edid)
        : identity_(hashOf(edid)),
          memory_(edid, pointer_),
          seats_{{{kEdidMemoryAddress, &memory_}, {kSegmentPointerAddress, &pointer_}}},
          bus_(std::span<const I2cSeat>(seats_).first(seatsTaken(edid.size())))
    {
    }

    // The bus points to the devices beside it.
    DdcConnector(const DdcConnector&) = delete;
    DdcConnector& operator=(const DdcConnector&) = delete;

    constexpr I2cBus* bus() { return &bus_; }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit.madeOf(identity_, [&] { visit(pointer_, memory_, bus_); });
    }

private:
    static constexpr std::size_t seatsTaken(std::size_t edidSize)
    {
        if (edidSize == 0) {
            return 0;
        }
        return edidSize <= 2 * kEdidBlockSize ? 1 : 2;
    }

    static constexpr std::uint64_t hashOf(std::span<const std::uint8_t> edid)
    {
        FactsHash hash;
        hash.add(edid);
        return hash.value();
    }

    std::uint64_t identity_;  ///< Of the display.
    SegmentPointer pointer_;
    EdidMemory memory_;
    std::array<I2cSeat, 2> seats_;
    SimulatedI2cBus bus_;
};

}  // namespace vek

#endif
