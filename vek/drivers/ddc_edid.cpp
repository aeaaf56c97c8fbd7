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

class DdcBlocks final : public EdidBlocks
{
public:
    explicit DdcBlocks(I2cBus& bus) : bus_(bus) {}

    int readBlock(std::size_t number, std::span<std::uint8_t> block) override
    {
        const EdidBlockPlace place = placeOfEdidBlock(number);
        I2cTransaction transaction(bus_);
        int result = selectMemory(transaction, place.segment);
        if (result == VEK_OK) {
            result = transaction.send({&place.offset, 1});
        }
        if (result == VEK_OK) {
            result = transaction.address(kEdidMemoryAddress, I2cDirection::kRead);
        }
        return result == VEK_OK ? transaction.receive(block) : result;
    }

private:
    I2cBus& bus_;
};

/// How many blocks there are to read, as far as the blocks tell that have been read.
std::size_t blocksToRead(std::span<const std::uint8_t> edid)
{
    const EdidVerdict verdict = checkEdid(edid);
    return verdict.headerValid ? verdict.declaredBlocks : 1;
}

}  // namespace

int readEdid(EdidBlocks& display, std::span<std::uint8_t> buffer, std::size_t& length)
{
    std::size_t blocks = 1;
    for (std::size_t number = 0; number < blocks; ++number) {
        const int result = display.readBlock(number, buffer.subspan(number * kEdidBlockSize, kEdidBlockSize));
        if (result != VEK_OK) {
            return result;
        }
        // The first extension, too, may say how many there are.
        if (number <= 1) {
            blocks =
                std::min(blocksToRead(buffer.first((number + 1) * kEdidBlockSize)), buffer.size() / kEdidBlockSize);
        }
    }
    length = blocks * kEdidBlockSize;
    return VEK_OK;
}

int readEdid(I2cBus& bus, EdidBuffer& buffer, std::size_t& length)
{
    DdcBlocks display(bus);
    return readEdid(display, buffer, length);
}

}  // namespace vek
