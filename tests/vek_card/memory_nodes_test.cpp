#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include "drivers/video_memory.h"

namespace
{

using vek::MemoryNode;
using vek::VideoMemory;

constexpr std::uint64_t kPage = VideoMemory::kPageSize;

/// The nodes as "first page, pages, free" triples.
using Node = std::array<std::uint64_t, 3>;

std::vector<Node> nodesOf(const VideoMemory& memory)
{
    std::vector<Node> nodes;
    for (const MemoryNode& node : memory.nodes()) {
        nodes.push_back({node.firstPage, node.pages, node.free ? 1U : 0U});
    }
    return nodes;
}

TEST(VideoMemoryNodes, AreOneFreeNodeAtFirst)
{
    const VideoMemory memory(16 * kPage);
    EXPECT_EQ(nodesOf(memory), (std::vector<Node>{{0, 16, 1}}));
    EXPECT_EQ(memory.freeBytes(), 16 * kPage);
    EXPECT_EQ(memory.totalBytes(), 16 * kPage);
}

TEST(VideoMemoryNodes, AreTakenInWholePagesFromTheFirstThatIsLongEnough)
{
    VideoMemory memory(16 * kPage);
    EXPECT_EQ(memory.allocate(1), 0U);
    EXPECT_EQ(memory.allocate(kPage), kPage);
    EXPECT_EQ(memory.allocate(kPage + 1), 2 * kPage);
    EXPECT_EQ(nodesOf(memory), (std::vector<Node>{{0, 1, 0}, {1, 1, 0}, {2, 2, 0}, {4, 12, 1}}));
    EXPECT_TRUE(memory.release(kPage));
    EXPECT_EQ(memory.allocate(2 * kPage), 4 * kPage) << "the hole of one page is too short";
    EXPECT_EQ(memory.allocate(kPage), kPage) << "and is taken when it fits";
    EXPECT_EQ(memory.freeBytes(), 10 * kPage);
    EXPECT_EQ(memory.totalBytes(), 16 * kPage);
}

TEST(VideoMemoryNodes, MergeWithFreeNeighboursOnBothSides)
{
    VideoMemory memory(8 * kPage);
    for (std::uint64_t page = 0; page < 8; ++page) {
        ASSERT_EQ(memory.allocate(kPage), page * kPage);
    }
    EXPECT_TRUE(memory.release(2 * kPage));
    EXPECT_TRUE(memory.release(4 * kPage));
    EXPECT_EQ(memory.nodes().size(), 8U) << "these are no neighbours";
    EXPECT_TRUE(memory.release(3 * kPage));
    EXPECT_EQ(nodesOf(memory), (std::vector<Node>{{0, 1, 0}, {1, 1, 0}, {2, 3, 1}, {5, 1, 0}, {6, 1, 0}, {7, 1, 0}}));
    EXPECT_TRUE(memory.release(7 * kPage));
    EXPECT_TRUE(memory.release(6 * kPage));
    EXPECT_TRUE(memory.release(0));
    EXPECT_EQ(nodesOf(memory), (std::vector<Node>{{0, 1, 1}, {1, 1, 0}, {2, 3, 1}, {5, 1, 0}, {6, 2, 1}}));
    EXPECT_TRUE(memory.release(kPage));
    EXPECT_TRUE(memory.release(5 * kPage));
    EXPECT_EQ(nodesOf(memory), (std::vector<Node>{{0, 8, 1}}));
}

TEST(VideoMemoryNodes, RefuseWhatIsNotToBeHad)
{
    VideoMemory memory(4 * kPage);
    EXPECT_EQ(memory.allocate(0), std::nullopt);
    EXPECT_EQ(memory.allocate(4 * kPage + 1), std::nullopt);
    EXPECT_EQ(memory.allocate(~std::uint64_t{0}), std::nullopt);
    EXPECT_FALSE(memory.release(0)) << "nothing is in use";
    EXPECT_EQ(memory.allocate(4 * kPage), 0U);
    EXPECT_EQ(memory.allocate(1), std::nullopt);
    EXPECT_FALSE(memory.release(kPage)) << "it is in use from 0 on";
    EXPECT_FALSE(memory.release(1));
    EXPECT_TRUE(memory.release(0));
    EXPECT_FALSE(memory.release(0)) << "it has been given back";
    EXPECT_EQ(nodesOf(memory), (std::vector<Node>{{0, 4, 1}}));
}

TEST(VideoMemoryNodes, AreGivenOutWholeWhenTheListIsFull)
{
    VideoMemory memory(1024 * kPage);
    for (std::size_t node = 1; node < VideoMemory::kMaxNodes; ++node) {
        ASSERT_TRUE(memory.allocate(2 * kPage));
    }
    ASSERT_EQ(memory.nodes().size(), VideoMemory::kMaxNodes);
    EXPECT_EQ(memory.allocate(kPage), std::nullopt) << "there is no room for the rest";
    ASSERT_TRUE(memory.release(2 * kPage));
    EXPECT_EQ(memory.allocate(kPage), std::nullopt);
    EXPECT_EQ(memory.allocate(2 * kPage), 2 * kPage) << "this one needs no further node";
}

TEST(VideoMemoryNodes, StayWholeThroughManyRandomChanges)
{
    constexpr std::uint64_t kPages = 500;
    VideoMemory memory(kPages * kPage);
    std::mt19937 random(1);
    std::vector<std::uint64_t> held;
    for (int step = 0; step < 20000; ++step) {
        if (random() % 2 == 0) {
            if (const std::optional<std::uint64_t> address = memory.allocate(1 + random() % (40 * kPage))) {
                held.push_back(*address);
            }
        } else if (!held.empty()) {
            const std::size_t which = random() % held.size();
            ASSERT_TRUE(memory.release(held[which]));
            held.erase(held.begin() + static_cast<std::ptrdiff_t>(which));
        }
        std::uint64_t next = 0;
        std::uint64_t used = 0;
        bool lastWasFree = false;
        for (const MemoryNode& node : memory.nodes()) {
            ASSERT_EQ(node.firstPage, next);
            ASSERT_GT(node.pages, 0U);
            ASSERT_FALSE(node.free && lastWasFree);
            lastWasFree = node.free;
            used += node.free ? 0 : 1;
            next += node.pages;
        }
        ASSERT_EQ(next, kPages);
        ASSERT_EQ(used, held.size());
    }
}

}  // namespace
