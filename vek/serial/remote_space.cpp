#include "serial/remote_space.h"

#include <algorithm>
#include <bit>

#include "vek.h"

namespace vek
{
namespace
{

using serial_protocol::Operation;

constexpr std::size_t kLongSize = sizeof(std::uint32_t);

/// The operation for items of a width, given that for bytes.
Operation ofWidth(Operation ofBytes, unsigned width)
{
    return static_cast<Operation>(static_cast<unsigned>(ofBytes) + static_cast<unsigned>(std::countr_zero(width)));
}

/// How many of a run's longs lie before the end of all addresses.
std::size_t longsBeforeEnd(std::uint64_t address, std::size_t count)
{
    constexpr std::uint64_t kLastPlace = kAllOnes - (kLongSize - 1);
    return address > kLastPlace
               ? 0
               : static_cast<std::size_t>(std::min<std::uint64_t>(count, (kLastPlace - address) / kLongSize + 1));
}

/// Does a run in steps of at most `most` longs. `step` gets the first long's index and the number of longs. A step that
/// nothing answered, in part, does not end the run.
template <typename Step>
int inSteps(std::uint64_t address, std::size_t count, std::size_t most, Step step)
{
    const std::size_t reachable = longsBeforeEnd(address, count);
    int result = reachable < count ? VEK_NO_RESPONSE : VEK_OK;
    for (std::size_t done = 0; done < reachable;) {
        const std::size_t longs = std::min(reachable - done, most);
        const int stepResult = step(done, longs);
        if (stepResult != VEK_OK && stepResult != VEK_NO_RESPONSE) {
            return stepResult;
        }
        result = stepResult == VEK_OK ? result : stepResult;
        done += longs;
    }
    return result;
}

}  // namespace

SerialRequest RemoteSpace::addressed(Operation operation, std::uint64_t address, std::size_t dataExpected)
{
    SerialRequest request(operation, dataExpected);
    request.put8(number_);
    request.put64(address);
    return request;
}

ReadResult RemoteSpace::read(std::uint64_t address, unsigned width)
{
    SerialRequest request = addressed(ofWidth(Operation::kRead1, width), address, width);
    SerialReply reply;
    const int result = link_.transact(request, reply);
    if (result != VEK_OK) {
        return {result, kAllOnes};
    }
    MessageReader body(reply.body());
    const std::uint64_t value = body.takeItem(width);
    return {body.finished() ? VEK_OK : VEK_BAD_DATA, value};
}

int RemoteSpace::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    SerialRequest request = addressed(ofWidth(Operation::kWrite1, width), address, 0);
    request.putItem(value, width);
    SerialReply reply;
    return link_.transact(request, reply);
}

int RemoteSpace::readBlock(std::uint64_t address, std::span<std::uint32_t> longs)
{
    SerialRequest request = addressed(Operation::kReadLongs, address, longs.size_bytes());
    request.put16(static_cast<std::uint16_t>(longs.size()));
    SerialReply reply;
    const int result = link_.transact(request, reply);
    if (result != VEK_OK && result != VEK_NO_RESPONSE) {
        return result;
    }
    if (reply.body().size() != longs.size_bytes()) {
        return VEK_BAD_DATA;
    }
    MessageReader body(reply.body());
    for (std::uint32_t& item : longs) {
        item = body.take32();
    }
    return result;
}

int RemoteSpace::writeBlock(std::uint64_t address, std::span<const std::uint32_t> longs)
{
    SerialRequest request = addressed(Operation::kWriteLongs, address, 0);
    for (const std::uint32_t item : longs) {
        request.put32(item);
    }
    SerialReply reply;
    return link_.transact(request, reply);
}

int RemoteSpace::fillBlock(std::uint64_t address, std::uint32_t value, std::uint32_t count)
{
    SerialRequest request = addressed(Operation::kFillLongs, address, 0);
    request.put32(value);
    request.put32(count);
    SerialReply reply;
    return link_.transact(request, reply);
}

int RemoteSpace::readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count)
{
    const std::span items(longs, count);
    const std::size_t reachable = longsBeforeEnd(address, count);
    const int result = inSteps(address, count, serial_protocol::kMaxLongs, [&](std::size_t done, std::size_t step) {
        return readBlock(address + done * kLongSize, items.subspan(done, step));
    });
    if (result == VEK_NO_RESPONSE) {
        std::fill(items.begin() + static_cast<std::ptrdiff_t>(reachable), items.end(),
                  static_cast<std::uint32_t>(kAllOnes));
    }
    return result;
}

int RemoteSpace::writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count)
{
    const std::span items(longs, count);
    return inSteps(address, count, serial_protocol::kMaxLongs, [&](std::size_t done, std::size_t step) {
        return writeBlock(address + done * kLongSize, items.subspan(done, step));
    });
}

int RemoteSpace::fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count)
{
    return inSteps(address, count, serial_protocol::kMaxFill, [&](std::size_t done, std::size_t step) {
        return fillBlock(address + done * kLongSize, value, static_cast<std::uint32_t>(step));
    });
}

}  // namespace vek
