#include "drivers/ddc_edid.h"

#include <algorithm>
#include <span>

#include "drivers/edid/edid.h"
#include "drivers/i2c_transfer.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr std::size_t kBlocksPerSegment = 2;

/// Begins a transaction with the memory addressed for writing and the segment of a block chosen. Segment 0 is where the
/// pointer stands at the beginning of every transaction.
int selectMemory(I2cTransaction& transaction, std::uint8_t segment)
{
    if (segment == 0) {
        return transaction.reach(kEdidMemoryAddress, I2cDirection::kWrite);
    }
    int result = transaction.reach(kSegmentPointerAddress, I2cDirection::kWrite);
    if (result == VEK_OK) {
        result = transaction.send({&segment, 1});
    }
    return result == VEK_OK ? transaction.address(kEdidMemoryAddress, I2cDirection::kWrite) : result;
}

int readBlock(I2cBus& bus, std::size_t number, std::span<std::uint8_t> block)
{
    const auto segment = static_cast<std::uint8_t>(number / kBlocksPerSegment);
    const auto offset = static_cast<std::uint8_t>(number % kBlocksPerSegment * kEdidBlockSize);
    I2cTransaction transaction(bus);
    int result = selectMemory(transaction, segment);
    if (result == VEK_OK) {
        result = transaction.send({&offset, 1});
    }
    if (result == VEK_OK) {
        result = transaction.address(kEdidMemoryAddress, I2cDirection::kRead);
    }
    return result == VEK_OK ? transaction.receive(block) : result;
}

/// How many blocks there are to read, as far as the blocks tell that have been read.
std::size_t blocksToRead(std::span<const std::uint8_t> edid)
{
    const EdidVerdict verdict = checkEdid(edid);
    return verdict.headerValid ? std::min(verdict.declaredBlocks, kMaxEdidSize / kEdidBlockSize) : 1;
}

}  // namespace

int readEdid(I2cBus& bus, EdidBuffer& buffer, std::size_t& length)
{
    const std::span<std::uint8_t> bytes = buffer;
    std::size_t blocks = 1;
    for (std::size_t number = 0; number < blocks; ++number) {
        const int result = readBlock(bus, number, bytes.subspan(number * kEdidBlockSize, kEdidBlockSize));
        if (result != VEK_OK) {
            return result;
        }
        // The first extension, too, may say how many there are.
        if (number <= 1) {
            blocks = blocksToRead(bytes.first((number + 1) * kEdidBlockSize));
        }
    }
    length = blocks * kEdidBlockSize;
    return VEK_OK;
}

}  // namespace vek
