#ifndef VEK_DRIVERS_VIDEO_MEMORY_H
#define VEK_DRIVERS_VIDEO_MEMORY_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace vek
{

/// A stretch of video memory that is free or in use as a whole.
struct MemoryNode {
    std::uint32_t firstPage;
    std::uint32_t pages;
    bool free;
};

/// Who has which part of a card's video memory: a list of nodes by rising address without gaps, in which no two free
/// ones lie side by side. It deals in pages of 4 KiB and gives out the first stretch that is large enough.
class VideoMemory
{
public:
    static constexpr std::uint64_t kPageSize = 4096;
    static constexpr std::size_t kMaxNodes = 48;

    /// A memory of whole pages, up to 16 TiB, all of it free.
    constexpr explicit VideoMemory(std::uint64_t bytes)
        : nodes_{{{.firstPage = 0, .pages = pagesFor(bytes), .free = true}}}
    {
    }

    /// Takes whole pages for so many bytes. Returns their address, or nothing when they are not to be had: nothing is
    /// free in one stretch that long, the list is full, or nothing was asked for.
    constexpr std::optional<std::uint64_t> allocate(std::uint64_t bytes)
    {
        if (bytes == 0) {
            return std::nullopt;
        }
        const std::uint64_t wanted = (bytes - 1) / kPageSize + 1;
        for (std::size_t index = 0; index < count_; ++index) {
            MemoryNode& node = nodes_[index];
            if (!node.free || node.pages < wanted || (node.pages > wanted && count_ == kMaxNodes)) {
                continue;
            }
            if (node.pages > wanted) {
                split(index, static_cast<std::uint32_t>(wanted));
            }
            node.free = false;
            return node.firstPage * kPageSize;
        }
        return std::nullopt;
    }

    /// Gives back what allocate() returned. Returns false when nothing is in use from that address on.
    constexpr bool release(std::uint64_t address)
    {
        for (std::size_t index = 0; index < count_; ++index) {
            if (nodes_[index].firstPage * kPageSize == address && !nodes_[index].free) {
                nodes_[index].free = true;
                mergeWithNext(index);
                if (index > 0) {
                    mergeWithNext(index - 1);
                }
                return true;
            }
        }
        return false;
    }

    /// The nodes by rising address.
    constexpr std::span<const MemoryNode> nodes() const { return std::span(nodes_).first(count_); }

    /// Bytes that are free, and all there are.
    constexpr std::uint64_t freeBytes() const
    {
        std::uint64_t pages = 0;
        for (const MemoryNode& node : nodes()) {
            pages += node.free ? node.pages : 0;
        }
        return pages * kPageSize;
    }
    constexpr std::uint64_t totalBytes() const
    {
        const MemoryNode& last = nodes().back();
        return (std::uint64_t{last.firstPage} + last.pages) * kPageSize;
    }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        const std::uint64_t total = totalBytes();
        visit.upTo(count_, kMaxNodes);
        for (MemoryNode& node : nodes_) {
            visit(node.firstPage, node.pages, node.free);
        }
        visit.check(isWhole(total));
    }

private:
    static constexpr std::uint32_t pagesFor(std::uint64_t bytes)
    {
        return static_cast<std::uint32_t>(bytes / kPageSize);
    }

    /// Whether the nodes make up a memory of so many bytes.
    constexpr bool isWhole(std::uint64_t bytes) const
    {
        if (count_ == 0 || count_ > kMaxNodes) {
            return false;
        }
        std::uint64_t page = 0;
        for (const MemoryNode& node : nodes()) {
            if (node.firstPage != page || node.pages == 0) {
                return false;
            }
            page += node.pages;
        }
        return page * kPageSize == bytes;
    }

    /// Leaves `pages` in a node and puts the rest into a free one behind it.
    constexpr void split(std::size_t index, std::uint32_t pages)
    {
        for (std::size_t to = count_; to > index + 1; --to) {
            nodes_[to] = nodes_[to - 1];
        }
        ++count_;
        MemoryNode& node = nodes_[index];
        nodes_[index + 1] = {.firstPage = node.firstPage + pages, .pages = node.pages - pages, .free = true};
        node.pages = pages;
    }

    constexpr void mergeWithNext(std::size_t index)
    {
        if (index + 1 >= count_ || !nodes_[index].free || !nodes_[index + 1].free) {
            return;
        }
        nodes_[index].pages += nodes_[index + 1].pages;
        --count_;
        for (std::size_t to = index + 1; to < count_; ++to) {
            nodes_[to] = nodes_[to + 1];
        }
    }

    std::size_t count_ = 1;
    std::array<MemoryNode, kMaxNodes> nodes_;
};

}  // namespace vek

#endif
