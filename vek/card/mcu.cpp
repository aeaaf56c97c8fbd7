#include "card/mcu.h"

#include <algorithm>
#include <numeric>

#include "drivers/aux_i2c.h"
#include "vek.h"

namespace vek
{
namespace
{

namespace mailbox = mcu_mailbox;

constexpr unsigned kByteBits = 8;
constexpr std::uint64_t kByteMask = 0xff;
constexpr std::size_t kMostBytes = 256;

/// What the firmware waits with: its time is that of the whole transaction.
class FirmwarePause final : public Pause
{
public:
    void microseconds(std::uint32_t /*duration*/) override {}
};

/// The mask of an item of `width` bytes.
std::uint64_t itemMask(unsigned width)
{
    return ~std::uint64_t{0} >> (64 - kByteBits * width);
}

bool isInside(std::uint64_t address, unsigned width, std::size_t size)
{
    return address < size && width <= size - address;
}

bool touches(std::uint64_t address, unsigned width, std::size_t offset, std::size_t size)
{
    return address < offset + size && address + width > offset;
}

bool blocksAreValid(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() < kEdidBlockSize) {
        return false;
    }
    for (; bytes.size() >= kEdidBlockSize; bytes = bytes.subspan(kEdidBlockSize)) {
        const auto block = bytes.first(kEdidBlockSize);
        if ((std::accumulate(block.begin(), block.end(), 0U) & kByteMask) != 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::size_t Mcu::Request::bytes() const
{
    if (command == static_cast<std::uint8_t>(McuCommand::kAuxWrite)) {
        return std::size_t{length} + 1;
    }
    return count == 0 ? kMostBytes : count;
}

std::uint32_t Mcu::longAt(std::size_t offset) const
{
    std::uint32_t value = 0;
    for (std::size_t index = sizeof value; index-- > 0;) {
        value = value << kByteBits | page_[offset + index];
    }
    return value;
}

void Mcu::assertReset()
{
    page_.fill(0);
    phase_ = Phase::kStopped;
}

void Mcu::releaseReset()
{
    if (condition_ != McuCondition::kNoFirmware) {
        phase_ = Phase::kBooting;
        dueAt_ = clock_.nanoseconds() + kBootTime;
    }
}

/// Lets the firmware do what it was to have done by now.
void Mcu::catchUp()
{
    const bool busy = phase_ == Phase::kBooting || phase_ == Phase::kWorking;
    if (!busy || clock_.nanoseconds() < dueAt_) {
        return;
    }
    if (phase_ == Phase::kBooting) {
        sign();
        phase_ = Phase::kIdle;
    } else {
        answerRequest();
        phase_ = Phase::kDone;
    }
}

void Mcu::takeRequest()
{
    request_ = {.command = page_[mailbox::kCommand],
                .length = page_[mailbox::kLength],
                .count = page_[mailbox::kCount],
                .subAddress = page_[mailbox::kSubAddress],
                .address = longAt(mailbox::kAddress)};
    page_[mailbox::kDoorbell] = 0;
    setLong(mailbox::kCompletion, 0);
    sign();
    phase_ = Phase::kWorking;
    dueAt_ = clock_.nanoseconds() + kTransactionTime * (1 + (request_.bytes() + kMaxAuxBytes - 1) / kMaxAuxBytes);
}

void Mcu::putData(std::span<const std::uint8_t> bytes)
{
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        data(index) = bytes[index];
    }
    page_[mailbox::kCaught] = static_cast<std::uint8_t>(std::min<std::size_t>(bytes.size(), 0xff));
}

std::uint8_t Mcu::readAux(AuxTransfer& aux)
{
    std::array<std::uint8_t, kMostBytes> bytes{};
    const std::size_t wanted = request_.bytes();
    std::size_t caught = 0;
    while (caught < wanted) {
        const auto part = std::span(bytes).subspan(caught, std::min(wanted - caught, kMaxAuxBytes));
        if (aux.readDpcd(request_.address + static_cast<std::uint32_t>(caught), part) != VEK_OK) {
            break;
        }
        caught += part.size();
    }
    putData(std::span(bytes).first(caught));
    return caught == 0 ? mailbox::kNothingOverAux : 0;
}

std::uint8_t Mcu::writeAux(AuxTransfer& aux)
{
    std::array<std::uint8_t, kMostBytes> bytes{};
    const auto sent = std::span(bytes).first(request_.bytes());
    for (std::size_t index = 0; index < sent.size(); ++index) {
        sent[index] = data(index);
    }
    return aux.writeDpcd(request_.address, sent) == VEK_OK ? 0 : mailbox::kNothingOverAux;
}

std::uint8_t Mcu::readI2c(AuxTransfer& aux)
{
    std::array<std::uint8_t, kMostBytes> bytes{};
    const auto wanted = std::span(bytes).first(request_.bytes());
    if (readAuxI2c(aux, request_.address, request_.subAddress, wanted) != VEK_OK) {
        return mailbox::kNothingOverI2c;
    }
    putData(wanted);
    page_[mailbox::kVerdict] = blocksAreValid(wanted) ? 1 : 0;
    return 0;
}

void Mcu::answerRequest()
{
    FirmwarePause pause;
    AuxTransfer aux(sink_, pause);
    std::uint8_t status = mailbox::kNothingOverAux;
    page_[mailbox::kCaught] = 0;
    page_[mailbox::kVerdict] = 0;
    switch (static_cast<McuCommand>(request_.command)) {
        case McuCommand::kAuxRead:
            status = readAux(aux);
            break;
        case McuCommand::kAuxWrite:
            status = writeAux(aux);
            break;
        case McuCommand::kI2cRead:
            status = readI2c(aux);
            break;
    }
    page_[mailbox::kStatus] = status;
    setLong(mailbox::kCompletion, mailbox::kDone);
}

ReadResult Mcu::Mailbox::read(std::uint64_t address, unsigned width)
{
    if (!isInside(address, width, mailbox::kSize)) {
        return kUnanswered;
    }
    mcu_.catchUp();
    std::uint64_t value = 0;
    for (std::uint64_t index = width; index-- > 0;) {
        value = value << kByteBits | mcu_.page_[address + index];
    }
    return {VEK_OK, value};
}

int Mcu::Mailbox::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!isInside(address, width, mailbox::kSize)) {
        return VEK_NO_RESPONSE;
    }
    mcu_.catchUp();
    for (unsigned index = 0; index < width; ++index) {
        mcu_.page_[address + index] = static_cast<std::uint8_t>(value >> (kByteBits * index));
    }
    const bool listens = mcu_.phase_ == Phase::kIdle || mcu_.phase_ == Phase::kDone;
    if (listens && touches(address, width, mailbox::kDoorbell, 1) && mcu_.page_[mailbox::kDoorbell] == mailbox::kRing) {
        mcu_.takeRequest();
    } else if (mcu_.phase_ == Phase::kDone && mcu_.longAt(mailbox::kCompletion) == 0) {
        mcu_.sign();
        mcu_.phase_ = Phase::kIdle;
    }
    return VEK_OK;
}

ReadResult Mcu::ResetControl::read(std::uint64_t address, unsigned width)
{
    if (!isInside(address, width, kResetControlSize)) {
        return kUnanswered;
    }
    return {VEK_OK, control_ >> (kByteBits * address) & itemMask(width)};
}

int Mcu::ResetControl::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!isInside(address, width, kResetControlSize)) {
        return VEK_NO_RESPONSE;
    }
    const std::uint64_t mask = itemMask(width) << (kByteBits * address);
    const bool ran = (control_ & kNotInReset) != 0;
    control_ = (control_ & ~mask) | (value << (kByteBits * address) & mask);
    const bool runs = (control_ & kNotInReset) != 0;
    if (ran && !runs) {
        mcu_.assertReset();
    } else if (!ran && runs) {
        mcu_.releaseReset();
    }
    return VEK_OK;
}

}  // namespace vek
