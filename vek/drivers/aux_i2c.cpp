#include "drivers/aux_i2c.h"

#include <algorithm>

#include "vek.h"

namespace vek
{
namespace
{

/// What an answer means; `refused` when the device did not acknowledge.
int resultOf(AuxAnswer answer, int refused)
{
    return answer == AuxAnswer::kI2cNack ? refused : auxResult(answer);
}

/// Reads from a device within a transaction that is under way or begins with this.
int readWithin(AuxI2cTransaction& transaction, std::uint8_t device, std::uint8_t subAddress,
               std::span<std::uint8_t> bytes)
{
    int result = transaction.address(device, I2cDirection::kWrite);
    if (result == VEK_OK) {
        result = transaction.send(subAddress);
    }
    if (result == VEK_OK) {
        result = transaction.address(device, I2cDirection::kRead);
    }
    return result == VEK_OK ? transaction.receive(bytes) : result;
}

}  // namespace

AuxRequest AuxI2cTransaction::request(std::size_t length, bool middleOfTransaction) const
{
    return {.command = direction_ == I2cDirection::kRead ? AuxCommand::kI2cRead : AuxCommand::kI2cWrite,
            .middleOfTransaction = middleOfTransaction,
            .address = device_,
            .length = static_cast<std::uint8_t>(length)};
}

AuxI2cTransaction::~AuxI2cTransaction()
{
    aux_.exchange(request(0, false));
}

int AuxI2cTransaction::address(std::uint8_t device, I2cDirection direction)
{
    device_ = device;
    direction_ = direction;
    return resultOf(aux_.exchange(request(0, true)).answer, VEK_NO_RESPONSE);
}

int AuxI2cTransaction::send(std::uint8_t byte)
{
    AuxRequest sending = request(1, true);
    sending.data[0] = byte;
    return resultOf(aux_.exchange(sending).answer, VEK_NO_ACK_DATA);
}

int AuxI2cTransaction::receive(std::span<std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const std::size_t asked = std::min(bytes.size(), kMaxAuxBytes);
        const AuxReply reply = aux_.exchange(request(asked, true));
        if (reply.answer != AuxAnswer::kAck) {
            return resultOf(reply.answer, VEK_NO_ACK_DATA);
        }
        const std::size_t got = std::min<std::size_t>(reply.length, asked);
        std::copy_n(reply.data.begin(), got, bytes.begin());
        bytes = bytes.subspan(got);
    }
    return VEK_OK;
}

int readAuxI2c(AuxTransfer& aux, std::uint32_t device, std::uint8_t subAddress, std::span<std::uint8_t> bytes)
{
    if (device > kMaxI2cDevice) {
        return VEK_BAD_ARGUMENT;
    }
    AuxI2cTransaction transaction(aux);
    return readWithin(transaction, static_cast<std::uint8_t>(device), subAddress, bytes);
}

int AuxEdidBlocks::readBlock(std::size_t number, std::span<std::uint8_t> block)
{
    const EdidBlockPlace place = placeOfEdidBlock(number);
    AuxI2cTransaction transaction(aux_);
    // Segment 0 is where the pointer stands at the beginning of every transaction; small displays have none.
    if (place.segment != 0) {
        int result = transaction.address(kSegmentPointerAddress, I2cDirection::kWrite);
        if (result == VEK_OK) {
            result = transaction.send(place.segment);
        }
        if (result != VEK_OK) {
            return result;
        }
    }
    return readWithin(transaction, kEdidMemoryAddress, place.offset, block);
}

}  // namespace vek
