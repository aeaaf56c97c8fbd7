#ifndef VEK_CARD_MCU_H
#define VEK_CARD_MCU_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "address_space.h"
#include "aux_channel.h"
#include "card/card_clock.h"
#include "drivers/aux_transfer.h"

namespace vek
{

/// The mailbox of the board's MCU: a page of its RAM that the host sees in the register region. Offsets in the page.
namespace mcu_mailbox
{

constexpr std::uint64_t kBase = 0x3'ff00;  ///< Of the page in the register region.
constexpr std::size_t kSize = 0x100;

constexpr std::size_t kSignature = 0x00;   ///< long: the firmware runs.
constexpr std::size_t kLength = 0x10;      ///< byte: a write sends this and one more bytes.
constexpr std::size_t kCommand = 0x11;     ///< byte: enum class McuCommand.
constexpr std::size_t kStatus = 0x12;      ///< byte: why there are no data.
constexpr std::size_t kDoorbell = 0x13;    ///< byte: writing kRing starts the transaction.
constexpr std::size_t kAddress = 0x14;     ///< long: DPCD address or I2C device.
constexpr std::size_t kCaught = 0x18;      ///< byte: how many bytes an AUX read brought, 255 when they are more.
constexpr std::size_t kCount = 0x19;       ///< byte: how many bytes to read, 0 for 256.
constexpr std::size_t kSubAddress = 0x1a;  ///< byte: where in the I2C device.
constexpr std::size_t kCompletion = 0x1c;  ///< long: kDone when done, written 0 by the host to release the mailbox.
constexpr std::size_t kVerdict = 0x21;     ///< byte: 1 when an I2C read's checksums are right.
constexpr std::size_t kData = 0x80;        ///< Data byte 0; the data go on to the end of the page, then at offset 0.

constexpr std::uint32_t kSignatureValue = 0xdead'beef;
constexpr std::uint8_t kRing = 0xaa;
constexpr std::uint32_t kDone = 0x55aa'55aa;
constexpr std::uint8_t kNothingOverAux = 1U << 3;
constexpr std::uint8_t kNothingOverI2c = 1U << 4;

}  // namespace mcu_mailbox

enum class McuCommand : std::uint8_t { kI2cRead = 1, kAuxWrite = 8, kAuxRead = 9 };

/// How a card's MCU comes up.
enum class McuCondition : std::uint8_t {
    kRunning,
    kHeldInReset,  ///< Until the host lets it go.
    kNoFirmware,   ///< Its resets work, but no signature ever comes.
};

/// The board's MCU: it runs AUX transactions on the host's behalf, as the mailbox asks.
///
/// The firmware looks at a request when the doorbell rings: it clears the completion word, takes the header out of the
/// page, and kTransactionTime later, and as much again for every 16 bytes, it leaves data, status and completion word
/// there. A doorbell that rings meanwhile is not heard. A failed transaction leaves the data as they were.
///
/// The page is RAM. Data bytes from 128 on lie over the header, so from completion to release the host sees data there,
/// but for the fields that the host reads in between (status, number caught, completion, verdict), which the firmware
/// writes after the data; the data bytes at these places are lost. With the release it writes its signature again.
///
/// The verdict of an I2C read is 1 when it brought at least one block of 128 bytes, counted from the first byte read,
/// and every whole block sums up to 0 modulo 256. What is left after the last whole block is not looked at.
///
/// In reset the page reads 0 and holds what the host writes; kBootTime after its end the signature is there.
class Mcu
{
public:
    static constexpr std::uint64_t kTransactionTime = 100'000;  ///< Nanoseconds.
    static constexpr std::uint64_t kBootTime = 20'000'000;      ///< Nanoseconds.

    /// The sink's channel and the clock have to live as long as the MCU.
    constexpr Mcu(AuxChannel& sink, const CardClock& clock, McuCondition condition)
        : sink_(sink),
          clock_(clock),
          condition_(condition),
          mailbox_(*this),
          resetControl_(*this, condition == McuCondition::kHeldInReset)
    {
        if (condition == McuCondition::kRunning) {
            phase_ = Phase::kIdle;
            sign();
        }
    }

    // The windows point back to their MCU.
    Mcu(const Mcu&) = delete;
    Mcu& operator=(const Mcu&) = delete;

    /// The page.
    constexpr AddressSpace* mailbox() { return &mailbox_; }

    /// Eight bytes: the reset control, a long of which bit 3 is 0 to hold the MCU in reset, and a long that only holds
    /// what is written.
    constexpr AddressSpace* resetControl() { return &resetControl_; }

    static constexpr std::uint64_t kResetControlBase = 0x30'8068;  ///< In the register region.
    static constexpr std::size_t kResetControlSize = 8;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit.madeOf(static_cast<std::uint64_t>(condition_), [&] {
            visit.upTo(phase_, Phase::kDone);
            visit(dueAt_, request_, page_, resetControl_);
        });
    }

private:
    static constexpr std::uint32_t kNotInReset = 1U << 3;

    enum class Phase : std::uint8_t {
        kStopped,  ///< In reset, or nothing to run.
        kBooting,
        kIdle,
        kWorking,
        kDone,  ///< Until the host releases the mailbox.
    };

    class Mailbox final : public AddressSpace
    {
    public:
        constexpr explicit Mailbox(Mcu& mcu) : mcu_(mcu) {}
        ReadResult read(std::uint64_t address, unsigned width) override;
        int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    private:
        Mcu& mcu_;
    };

    class ResetControl final : public AddressSpace
    {
    public:
        constexpr ResetControl(Mcu& mcu, bool inReset) : mcu_(mcu), control_(kUpperBits | (inReset ? 0 : kNotInReset))
        {
        }
        ReadResult read(std::uint64_t address, unsigned width) override;
        int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

        template <typename Visitor>
        void visitState(Visitor& visit)
        {
            visit(control_);
        }

    private:
        static constexpr std::uint64_t kUpperBits = 0xffff'ff00;

        Mcu& mcu_;
        std::uint64_t control_;
    };

    /// A request as it stood in the header when the doorbell rang.
    struct Request {
        std::uint8_t command = 0;
        std::uint8_t length = 0;
        std::uint8_t count = 0;
        std::uint8_t subAddress = 0;
        std::uint32_t address = 0;

        std::size_t bytes() const;

        template <typename Visitor>
        void visitState(Visitor& visit)
        {
            visit(command, length, count, subAddress, address);
        }
    };

    constexpr void setLong(std::size_t offset, std::uint32_t value)
    {
        constexpr unsigned kByteBits = 8;
        for (std::size_t index = 0; index < sizeof value; ++index) {
            page_[offset + index] = static_cast<std::uint8_t>(value >> (kByteBits * index));
        }
    }
    constexpr void sign() { setLong(mcu_mailbox::kSignature, mcu_mailbox::kSignatureValue); }

    std::uint32_t longAt(std::size_t offset) const;
    std::uint8_t& data(std::size_t index) { return page_[(mcu_mailbox::kData + index) % mcu_mailbox::kSize]; }
    void assertReset();
    void releaseReset();
    void catchUp();
    void takeRequest();
    void answerRequest();
    std::uint8_t readAux(AuxTransfer& aux);
    std::uint8_t writeAux(AuxTransfer& aux);
    std::uint8_t readI2c(AuxTransfer& aux);
    void putData(std::span<const std::uint8_t> bytes);

    AuxChannel& sink_;
    const CardClock& clock_;
    McuCondition condition_;
    Phase phase_ = Phase::kStopped;
    std::uint64_t dueAt_ = 0;
    Request request_;
    std::array<std::uint8_t, mcu_mailbox::kSize> page_{};
    Mailbox mailbox_;
    ResetControl resetControl_;
};

}  // namespace vek

#endif
