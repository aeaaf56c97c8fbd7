#ifndef VEK_CARD_SAA7111A_H
#define VEK_CARD_SAA7111A_H

#include <array>
#include <cstdint>

#include "card/i2c_device.h"
#include "drivers/saa7111a.h"

namespace vek
{

/// What is connected to a decoder's input AI11.
enum class VideoSignal : std::uint8_t { kNone, kPal, kNtsc };

/// The picture that a decoder puts out; all 0 when there is none.
struct VideoPicture {
    std::uint16_t width;             ///< Pixels, as ITU-R BT.601 samples a line.
    std::uint16_t height;            ///< Visible lines of both fields.
    std::uint32_t frameNanoseconds;  ///< Duration of both fields.
};

/// An SAA7111A (drivers/saa7111a.h). It comes up with composite video from AI11 selected. Read-only and reserved
/// registers ignore what is written; the text slicer finds nothing.
class Saa7111a final : public I2cDevice
{
public:
    constexpr explicit Saa7111a(VideoSignal signal) : signal_(signal)
    {
        registers_[saa7111a::kChipVersion] = kVersion;
        registers_[saa7111a::kInputControl] = kInputControlAfterReset;
    }

    bool addressed(bool forReading) override;
    bool receive(std::uint8_t byte) override;
    std::uint8_t send() override;

    /// What comes out of the decoder as it is set now.
    VideoPicture picture() const;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(registers_, subAddress_, awaitsSubAddress_);
    }

private:
    static constexpr std::uint8_t kVersion = 0x10;
    static constexpr std::uint8_t kInputControlAfterReset = 0xc0;

    VideoSignal selectedSignal() const;
    std::uint8_t status() const;

    VideoSignal signal_;
    std::array<std::uint8_t, saa7111a::kRegisterCount> registers_{};
    std::uint8_t subAddress_ = 0;
    bool awaitsSubAddress_ = false;
};

}  // namespace vek

#endif
