#include "serial/board_end.h"

#include <algorithm>
#include <array>

#include "crc32.h"
#include "vek.h"

namespace vek
{
namespace
{

using serial_protocol::kHeaderSize;
using serial_protocol::kMaxData;
using serial_protocol::kMaxFill;
using serial_protocol::kMaxLongs;
using serial_protocol::kReplyBit;
using serial_protocol::Operation;
using serial_protocol::statusOf;

constexpr unsigned kLongSize = sizeof(std::uint32_t);

/// The width of the items that an operation moves, given that for bytes.
unsigned widthOf(Operation operation, Operation ofBytes)
{
    return 1U << (static_cast<unsigned>(operation) - static_cast<unsigned>(ofBytes));
}

/// Whether a run of longs ends before the addresses do.
bool reachable(std::uint64_t address, std::uint64_t count)
{
    return count == 0 || (count * kLongSize - 1) <= kAllOnes - address;
}

/// Of the results of a run, the one to report: the first failure that is not a missing answer, else that.
int worse(int earlier, int later)
{
    return later == VEK_OK || (earlier != VEK_OK && earlier != VEK_NO_RESPONSE) ? earlier : later;
}

bool knownCommand(std::uint8_t command)
{
    switch (static_cast<AuxCommand>(command)) {
        case AuxCommand::kI2cWrite:
        case AuxCommand::kI2cRead:
        case AuxCommand::kI2cWriteStatusUpdate:
        case AuxCommand::kNativeWrite:
        case AuxCommand::kNativeRead:
            return true;
    }
    return false;
}

bool isWrite(AuxCommand command)
{
    return command == AuxCommand::kI2cWrite || command == AuxCommand::kNativeWrite;
}

/// Steps on an I2C bus that end with the first one that is not done.
struct I2cRun {
    I2cBus& bus;
    I2cStep step = I2cStep::kDone;
    std::uint16_t written = 0;

    void start() { step = bus.start(); }

    void write(std::span<const std::uint8_t> bytes)
    {
        for (const std::uint8_t byte : bytes) {
            if (step != I2cStep::kDone) {
                return;
            }
            step = bus.write(byte);
            if (step == I2cStep::kDone) {
                ++written;
            }
        }
    }

    void read(std::size_t count, bool lastIsLast, MessageWriter& reply)
    {
        for (std::size_t left = count; left > 0 && step == I2cStep::kDone; --left) {
            const I2cByte byte = bus.read(left > 1 || !lastIsLast);
            step = byte.step;
            if (step == I2cStep::kDone) {
                reply.put8(byte.value);
            }
        }
    }
};

}  // namespace

void BoardEnd::take(std::span<const std::uint8_t> bytes)
{
    for (const std::uint8_t byte : bytes) {
        if (decoder_.take(byte)) {
            handle(decoder_.message());
        }
    }
}

void BoardEnd::handle(std::span<const std::uint8_t> message)
{
    MessageReader body(message);
    const std::uint8_t operation = body.take8();
    const std::uint16_t session = body.take16();
    const std::uint16_t sequence = body.take16();
    // A line that echoes brings the board's own replies back.
    if (!body.sound() || (operation & kReplyBit) != 0) {
        return;
    }
    if (operation == static_cast<std::uint8_t>(Operation::kGreet)) {
        greet(session, sequence, body);
    } else if (!greeted_ || session != session_) {
        refuse(operation, session, sequence, serial_protocol::kNoSession);
    } else {
        serve(message, session, sequence, body);
    }
}

void BoardEnd::greet(std::uint16_t nonceLow, std::uint16_t nonceHigh, MessageReader& body)
{
    const std::uint8_t version = body.take8();
    if (!body.sound()) {
        return;
    }
    MessageWriter reply(static_cast<std::uint8_t>(Operation::kGreet) | kReplyBit, nonceLow, nonceHigh);
    const bool understood = version == serial_protocol::kVersion && body.finished();
    reply.put8(statusOf(understood ? VEK_OK : VEK_NOT_AVAILABLE));
    reply.put8(serial_protocol::kVersion);
    if (understood) {
        const std::uint32_t nonce = static_cast<std::uint32_t>(nonceHigh) << 16 | nonceLow;
        // The same greeting once more must not make the board forget what it has done since.
        if (!greeted_ || nonce != nonce_) {
            session_ = static_cast<std::uint16_t>(session_ == 0xffff ? 1 : session_ + 1);
            nonce_ = nonce;
            lastSequence_ = 0;
            lastReplySize_ = 0;
            greeted_ = true;
        }
        BoardServices services = servicesOf(card_);
        services.session = session_;
        putServices(reply, services);
    }
    FrameBuffer buffer;
    sink_.send(encodeFrame(reply.bytes(), buffer));
}

void BoardEnd::refuse(std::uint8_t operation, std::uint16_t session, std::uint16_t sequence, std::uint8_t status)
{
    MessageWriter reply(operation | kReplyBit, session, sequence);
    reply.put8(status);
    FrameBuffer buffer;
    sink_.send(encodeFrame(reply.bytes(), buffer));
}

void BoardEnd::serve(std::span<const std::uint8_t> message, std::uint16_t session, std::uint16_t sequence,
                     MessageReader& body)
{
    const std::uint8_t operation = message[0];
    const std::uint32_t check = crc32(message);
    // The host gives up on requests and goes on to the next number, so numbers may be left out, but never come back.
    const auto ahead = static_cast<std::int16_t>(sequence - lastSequence_);
    if (ahead < 0 || (ahead == 0 && (lastReplySize_ == 0 || check != lastRequest_))) {
        refuse(operation, session, sequence, serial_protocol::kStale);
        return;
    }
    if (ahead > 0) {
        MessageWriter reply(operation | kReplyBit, session, sequence);
        reply.put8(statusOf(VEK_OK));
        const int result = execute(static_cast<Operation>(operation), body, reply);
        reply.at(kHeaderSize) = statusOf(result);
        lastReplySize_ = encodeFrame(reply.bytes(), lastReply_).size();
        lastRequest_ = check;
        lastSequence_ = sequence;
    }
    sink_.send(std::span(lastReply_).first(lastReplySize_));
}

/// Carries out a request; `reply` gets what stands behind the status.
int BoardEnd::execute(Operation operation, MessageReader& body, MessageWriter& reply)
{
    ++executions_;
    switch (operation) {
        case Operation::kRead1:
        case Operation::kRead2:
        case Operation::kRead4:
        case Operation::kRead8:
            return readItem(widthOf(operation, Operation::kRead1), body, reply);
        case Operation::kWrite1:
        case Operation::kWrite2:
        case Operation::kWrite4:
        case Operation::kWrite8:
            return writeItem(widthOf(operation, Operation::kWrite1), body);
        case Operation::kReadLongs:
            return readLongs(body, reply);
        case Operation::kWriteLongs:
            return writeLongs(body);
        case Operation::kFillLongs:
            return fillLongs(body);
        case Operation::kI2c:
            return runI2c(body, reply);
        case Operation::kAux:
            return transactAux(body, reply);
        case Operation::kSpi:
            return runSpi(body, reply);
        default:
            return VEK_NOT_AVAILABLE;
    }
}

AddressSpace* BoardEnd::space(std::size_t number) const
{
    AddressSpace* found = nullptr;
    visitSpaces(card_, [&](std::size_t each, AddressSpace* space) { found = each == number ? space : found; });
    return found;
}

I2cBus* BoardEnd::i2cBus(std::size_t number) const
{
    I2cBus* found = nullptr;
    visitI2cBuses(card_, [&](std::size_t each, I2cBus* bus) { found = each == number ? bus : found; });
    return found;
}

int BoardEnd::readItem(unsigned width, MessageReader& body, MessageWriter& reply)
{
    AddressSpace* target = space(body.take8());
    const std::uint64_t address = body.take64();
    if (!body.finished()) {
        return VEK_BAD_ARGUMENT;
    }
    if (target == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    const auto [result, value] = target->read(address, width);
    if (result == VEK_OK) {
        reply.putItem(value, width);
    }
    return result;
}

int BoardEnd::writeItem(unsigned width, MessageReader& body)
{
    AddressSpace* target = space(body.take8());
    const std::uint64_t address = body.take64();
    const std::uint64_t value = body.takeItem(width);
    if (!body.finished()) {
        return VEK_BAD_ARGUMENT;
    }
    return target == nullptr ? VEK_NOT_AVAILABLE : target->write(address, width, value);
}

int BoardEnd::readLongs(MessageReader& body, MessageWriter& reply)
{
    AddressSpace* target = space(body.take8());
    const std::uint64_t address = body.take64();
    const std::size_t count = body.take16();
    if (!body.finished() || count > kMaxLongs || !reachable(address, count)) {
        return VEK_BAD_ARGUMENT;
    }
    if (target == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    const std::size_t before = reply.size();
    int result = VEK_OK;
    for (std::size_t index = 0; index < count; ++index) {
        const auto [one, value] = target->read(address + index * kLongSize, kLongSize);
        result = worse(result, one);
        reply.put32(static_cast<std::uint32_t>(one == VEK_OK ? value : kAllOnes));
    }
    if (result != VEK_OK && result != VEK_NO_RESPONSE) {
        reply.cutTo(before);
    }
    return result;
}

int BoardEnd::writeLongs(MessageReader& body)
{
    AddressSpace* target = space(body.take8());
    std::uint64_t address = body.take64();
    const std::size_t bytes = body.rest().size();
    if (!body.sound() || bytes % kLongSize != 0 || bytes > kMaxData || !reachable(address, bytes / kLongSize)) {
        return VEK_BAD_ARGUMENT;
    }
    if (target == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    int result = VEK_OK;
    while (!body.finished()) {
        result = worse(result, target->write(address, kLongSize, body.take32()));
        address += kLongSize;
    }
    return result;
}

int BoardEnd::fillLongs(MessageReader& body)
{
    AddressSpace* target = space(body.take8());
    const std::uint64_t address = body.take64();
    const std::uint32_t value = body.take32();
    const std::uint32_t count = body.take32();
    if (!body.finished() || count > kMaxFill || !reachable(address, count)) {
        return VEK_BAD_ARGUMENT;
    }
    if (target == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    int result = VEK_OK;
    for (std::uint64_t index = 0; index < count; ++index) {
        result = worse(result, target->write(address + index * kLongSize, kLongSize, value));
    }
    return result;
}

int BoardEnd::runI2c(MessageReader& body, MessageWriter& reply)
{
    I2cBus* bus = i2cBus(body.take8());
    const std::uint8_t flags = body.take8();
    const std::size_t reads = body.take16();
    if (!body.sound() || reads > kMaxData || body.rest().size() > kMaxData) {
        return VEK_BAD_ARGUMENT;
    }
    if (bus == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    const std::size_t outcomeAt = reply.size();
    reply.put8(0);
    reply.put16(0);
    I2cRun run{.bus = *bus};
    if ((flags & serial_protocol::kI2cStart) != 0) {
        run.start();
    }
    run.write(body.rest());
    run.read(reads, (flags & serial_protocol::kI2cLastByte) != 0, reply);
    if ((flags & serial_protocol::kI2cStop) != 0) {
        bus->stop();
    }
    reply.at(outcomeAt) = static_cast<std::uint8_t>(run.step);
    reply.at(outcomeAt + 1) = static_cast<std::uint8_t>(run.written);
    reply.at(outcomeAt + 2) = static_cast<std::uint8_t>(run.written >> 8);
    return VEK_OK;
}

int BoardEnd::transactAux(MessageReader& body, MessageWriter& reply)
{
    const std::size_t channel = body.take8();
    const std::uint8_t command = body.take8();
    const std::uint8_t flags = body.take8();
    AuxRequest request{.command = static_cast<AuxCommand>(command),
                       .middleOfTransaction = (flags & serial_protocol::kAuxMiddleOfTransaction) != 0};
    request.address = body.take32();
    request.length = body.take8();
    if (!body.sound() || !knownCommand(command) || request.address >= kAuxAddressEnd || request.length > kMaxAuxBytes ||
        body.rest().size() != (isWrite(request.command) ? request.length : 0U)) {
        return VEK_BAD_ARGUMENT;
    }
    AuxChannel* target = channel < card_.dpAux.size() ? card_.dpAux[channel] : nullptr;
    if (target == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    std::copy(body.rest().begin(), body.rest().end(), request.data.begin());
    const AuxReply answer = target->transact(request);
    if (answer.answer == AuxAnswer::kFailed) {
        return VEK_IO_ERROR;
    }
    reply.put8(static_cast<std::uint8_t>(answer.answer));
    reply.putBytes(std::span(answer.data).first(std::min<std::size_t>(answer.length, kMaxAuxBytes)));
    return VEK_OK;
}

int BoardEnd::runSpi(MessageReader& body, MessageWriter& reply)
{
    const std::uint8_t flags = body.take8();
    const std::size_t reads = body.take16();
    if (!body.sound() || reads > kMaxData || body.rest().size() > kMaxData) {
        return VEK_BAD_ARGUMENT;
    }
    if (card_.spi == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    if ((flags & serial_protocol::kSpiSelect) != 0) {
        card_.spi->select();
    }
    int result = body.rest().empty() ? VEK_OK : card_.spi->write(body.rest());
    std::array<std::uint8_t, kMaxData> received;
    const auto bytes = std::span(received).first(reads);
    if (result == VEK_OK && reads > 0) {
        result = card_.spi->read(bytes);
    }
    if (result == VEK_OK) {
        reply.putBytes(bytes);
    }
    if ((flags & serial_protocol::kSpiDeselect) != 0) {
        card_.spi->deselect();
    }
    return result;
}

}  // namespace vek
