#include "state/snapshot.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

#include "crc32.h"

namespace vek
{
namespace
{

constexpr std::array<unsigned char, 8> kMagic{'V', 'E', 'K', 'S', 'T', 'A', 'T', 'E'};

/// Of the meaning of the fields: another one whenever it changes without a change of their sizes.
constexpr std::uint32_t kVersion = 1;

constexpr std::size_t kSlotsAt = 0x40;
constexpr std::size_t kSlotAlignment = 0x40;
constexpr std::size_t kCheckAt = 0x08;
constexpr std::size_t kCheckedAt = 0x10;
constexpr std::size_t kNumberSize = 8;
constexpr std::size_t kStateAt = kCheckedAt + kNumberSize;

struct Header {
    std::array<unsigned char, 8> magic;
    std::uint32_t version;
    std::uint32_t check;
    SnapshotKind kind;
};
static_assert(sizeof(Header) == 0x28 && sizeof(Header) <= kSlotsAt);

std::uint32_t checkOf(Header header)
{
    header.check = 0;
    std::array<std::uint8_t, sizeof header> bytes;
    std::memcpy(bytes.data(), &header, sizeof header);
    return crc32(bytes);
}

constexpr std::size_t slotSize(std::size_t stateSize)
{
    return (kStateAt + stateSize + kSlotAlignment - 1) / kSlotAlignment * kSlotAlignment;
}

}  // namespace

std::size_t Snapshot::fileSize(std::size_t stateSize)
{
    return kSlotsAt + kSlots * slotSize(stateSize);
}

void Snapshot::create(const SnapshotKind& kind, std::span<const std::uint8_t> state)
{
    Header header{.magic = kMagic, .version = kVersion, .check = 0, .kind = kind};
    header.check = checkOf(header);
    std::memcpy(file_, &header, sizeof header);
    store(1, state);
}

const char* Snapshot::fault(const SnapshotKind& kind) const
{
    Header header;
    std::memcpy(&header, file_, sizeof header);
    if (header.magic != kMagic) {
        return "is not the state of a card";
    }
    if (header.check != checkOf(header)) {
        return "is damaged";
    }
    if (header.version != kVersion || header.kind.size != kind.size || header.kind.layout != kind.layout) {
        return "is the state that another version of this library keeps";
    }
    if (header.kind.card != kind.card) {
        return "is the state of a card of another description";
    }
    return nullptr;
}

std::uint64_t Snapshot::newest() const
{
    return std::max(numberIn(0), numberIn(1));
}

Snapshot::Found Snapshot::find() const
{
    const std::size_t newer = numberIn(0) > numberIn(1) ? 0 : 1;
    for (const std::size_t index : {newer, 1 - newer}) {
        if (isWhole(index)) {
            return {numberIn(index), {slot(index) + kStateAt, size_}};
        }
    }
    return {0, {}};
}

void Snapshot::store(std::uint64_t number, std::span<const std::uint8_t> state)
{
    unsigned char* to = slot(number % kSlots);
    std::memcpy(to + kCheckedAt, &number, sizeof number);
    std::memcpy(to + kStateAt, state.data(), state.size());
    const std::uint32_t check = crc32({to + kCheckedAt, kNumberSize + state.size()});
    std::memcpy(to + kCheckAt, &check, sizeof check);
    std::atomic_ref(*reinterpret_cast<std::uint64_t*>(to)).store(number, std::memory_order_release);
}

unsigned char* Snapshot::slot(std::size_t index) const
{
    return file_ + kSlotsAt + index * slotSize(size_);
}

std::uint64_t Snapshot::numberIn(std::size_t index) const
{
    return std::atomic_ref(*reinterpret_cast<std::uint64_t*>(slot(index))).load(std::memory_order_acquire);
}

bool Snapshot::isWhole(std::size_t index) const
{
    const unsigned char* from = slot(index);
    std::uint64_t number = 0;
    std::uint32_t check = 0;
    std::memcpy(&number, from + kCheckedAt, sizeof number);
    std::memcpy(&check, from + kCheckAt, sizeof check);
    return number % kSlots == index && number != 0 && number == numberIn(index) &&
           check == crc32({from + kCheckedAt, kNumberSize + size_});
}

}  // namespace vek
