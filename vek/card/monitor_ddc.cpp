#include "card/monitor_ddc.h"

namespace vek
{
namespace
{

constexpr std::uint8_t kReleasedLine = 0xff;
constexpr std::size_t kSegmentSize = 256;

}  // namespace

bool SegmentPointer::receive(std::uint8_t byte)
{
    segment_ = byte;
    return true;
}

std::uint8_t SegmentPointer::send()
{
    return kReleasedLine;
}

bool EdidMemory::addressed(bool forReading)
{
    awaitsOffset_ = !forReading;
    return true;
}

bool EdidMemory::receive(std::uint8_t byte)
{
    if (!awaitsOffset_) {
        return false;
    }
    offset_ = byte;
    awaitsOffset_ = false;
    return true;
}

std::uint8_t EdidMemory::send()
{
    const std::size_t at = pointer_.segment() * kSegmentSize + offset_++;
    return at < edid_.size() ? edid_[at] : kReleasedLine;
}

}  // namespace vek
