#include "card/saa7111a.h"

namespace vek
{
namespace
{

bool isWritable(std::uint8_t subAddress)
{
    constexpr std::uint8_t kLastControl = 0x17;
    constexpr std::uint8_t kReserved1 = 0x0f;
    constexpr std::uint8_t kReserved2 = 0x14;
    return subAddress >= saa7111a::kFirstControl && subAddress <= kLastControl && subAddress != kReserved1 &&
           subAddress != kReserved2;
}

}  // namespace

bool Saa7111a::addressed(bool forReading)
{
    awaitsSubAddress_ = !forReading;
    return true;
}

bool Saa7111a::receive(std::uint8_t byte)
{
    if (awaitsSubAddress_) {
        awaitsSubAddress_ = false;
        subAddress_ = byte;
        return byte < saa7111a::kRegisterCount;
    }
    if (isWritable(subAddress_)) {
        registers_[subAddress_] = byte;
    }
    ++subAddress_;
    return true;
}

std::uint8_t Saa7111a::send()
{
    const std::uint8_t from = subAddress_++;
    if (from == saa7111a::kStatus) {
        return status();
    }
    return from < registers_.size() ? registers_[from] : std::uint8_t{0xff};
}

/// The signal at the input that brings the sync pulses.
VideoSignal Saa7111a::selectedSignal() const
{
    switch (registers_[saa7111a::kInputControl] & saa7111a::kInputMode) {
        case 0:
        case 4:
        case 6:
            return signal_;
        default:
            return VideoSignal::kNone;
    }
}

std::uint8_t Saa7111a::status() const
{
    const VideoSignal signal = selectedSignal();
    if (signal == VideoSignal::kNone) {
        return saa7111a::kStatusUnlocked;
    }
    // Composite video has its colour on the same line, so another input brings none.
    const bool composite = (registers_[saa7111a::kInputControl] & saa7111a::kInputMode) == 0;
    const unsigned colour = composite ? saa7111a::kStatusColourDetected : 0U;
    const unsigned frequency = signal == VideoSignal::kNtsc ? saa7111a::kStatus60Hz : 0U;
    return static_cast<std::uint8_t>(colour | frequency);
}

VideoPicture Saa7111a::picture() const
{
    switch (selectedSignal()) {
        case VideoSignal::kPal:
            return {.width = 720, .height = 576, .frameNanoseconds = 40'000'000};
        case VideoSignal::kNtsc:
            return {.width = 720, .height = 480, .frameNanoseconds = 33'366'667};
        default:
            return {};
    }
}

}  // namespace vek
