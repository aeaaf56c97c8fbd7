#ifndef VEK_STATE_SNAPSHOT_H
#define VEK_STATE_SNAPSHOT_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace vek
{

/// What a state belongs to. Only what is equal fits.
struct SnapshotKind {
    std::uint64_t size;    ///< Bytes of a state.
    std::uint64_t layout;  ///< Of its fields.
    std::uint64_t card;    ///< Of the card's description.

    bool operator==(const SnapshotKind&) const = default;
};

/// The small state of a card in a mapped file, of which there is always a whole one, whenever whoever writes is killed:
/// a new state goes where the last but one was, and counts from the last store on. Whoever reads or writes has to keep
/// others away.
///
///     0x000  magic "VEKSTATE"
///     0x008  version, 4 bytes; CRC-32 of the bytes 0x000 to 0x027 with 0 here, 4 bytes
///     0x010  size, layout and card of SnapshotKind, 8 bytes each
///     0x040  the slots, one after the other, each at a multiple of 64, for states with even and with odd numbers:
///
///     0x00  number of the state, 8 bytes, stored last
///     0x08  CRC-32 of the bytes from 0x10 to the end of the state, 4 bytes, and 4 bytes 0
///     0x10  number of the state, 8 bytes
///     0x18  the state
///
/// Everything in the byte order of the host.
class Snapshot
{
public:
    /// Bytes of the file.
    static std::size_t fileSize(std::size_t stateSize);

    /// Works on a file that is mapped for good.
    Snapshot(unsigned char* file, std::size_t stateSize) : file_(file), size_(stateSize) {}

    /// Makes an empty file one with a first state.
    void create(const SnapshotKind& kind, std::span<const std::uint8_t> state);

    /// What is wrong with the head of the file for a card, null if nothing is.
    const char* fault(const SnapshotKind& kind) const;

    /// The number of the state that is there by the looks of it: nothing has been written as long as it stays.
    std::uint64_t newest() const;

    /// A whole state.
    struct Found {
        std::uint64_t number;  ///< 0 when there is none.
        std::span<const std::uint8_t> state;
    };

    /// Finds the newest whole state.
    Found find() const;

    /// Writes a state with the number after that of the one that find() has found.
    void store(std::uint64_t number, std::span<const std::uint8_t> state);

private:
    static constexpr std::size_t kSlots = 2;

    unsigned char* slot(std::size_t index) const;
    std::uint64_t numberIn(std::size_t index) const;
    bool isWhole(std::size_t index) const;

    unsigned char* file_;
    std::size_t size_;
};

}  // namespace vek

#endif
