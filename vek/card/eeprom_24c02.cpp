#include "card/eeprom_24c02.h"

namespace vek
{

void Eeprom24c02::start()
{
    collected_ = 0;
}

bool Eeprom24c02::addressed(bool forReading)
{
    if (busyTries_ > 0) {
        --busyTries_;
        return false;
    }
    awaitsCounter_ = !forReading;
    return true;
}

bool Eeprom24c02::receive(std::uint8_t byte)
{
    if (awaitsCounter_) {
        counter_ = byte;
        awaitsCounter_ = false;
        return true;
    }
    const std::size_t column = counter_ % kPageSize;
    page_[column] = byte;
    collected_ = static_cast<std::uint8_t>(collected_ | 1U << column);
    counter_ = static_cast<std::uint8_t>(counter_ - column + (column + 1) % kPageSize);
    return true;
}

std::uint8_t Eeprom24c02::send()
{
    return contents_[counter_++];
}

void Eeprom24c02::stop()
{
    if (collected_ == 0) {
        return;
    }
    const std::size_t page = counter_ - counter_ % kPageSize;
    for (std::size_t column = 0; column < kPageSize; ++column) {
        if ((collected_ >> column & 1U) != 0) {
            contents_[page + column] = page_[column];
        }
    }
    collected_ = 0;
    busyTries_ = kWriteCycleTries;
}

}  // namespace vek
