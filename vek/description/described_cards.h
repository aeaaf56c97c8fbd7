#ifndef VEK_DESCRIPTION_DESCRIBED_CARDS_H
#define VEK_DESCRIPTION_DESCRIBED_CARDS_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "card/card_facts.h"
#include "drivers/output_routing.h"
#include "drivers/spi_nor.h"

namespace vek
{

/// As many cards as an index can be given to at start (vekRwOpen()).
constexpr std::size_t kMostCards = 4;

constexpr std::size_t kMostEdidBytes = 512;
constexpr std::size_t kMostStuckBits = 16;

/// A card as it was described. Its facts point into the object itself, which has to stay where it is.
struct DescribedCard {
    DescribedCard() = default;
    DescribedCard(const DescribedCard&) = delete;
    DescribedCard& operator=(const DescribedCard&) = delete;

    CardFacts facts{};

    // What the facts point to. No initializers: most of it is never touched, in memory that need not be there.
    std::array<char, kMostBoardText> name;
    std::array<char, kMostBoardText> serial;
    std::array<std::array<std::uint8_t, kMostEdidBytes>, kDisplayOutputs> edids;  ///< By enum class DisplayOutput.
    std::array<StuckBit, kMostStuckBits> stuckBits;
    std::array<std::uint8_t, spi_nor::kSize> flashImage;
};

/// The cards of a description by their index, the first `count` of them.
struct DescribedCards {
    std::size_t count = 0;
    std::array<DescribedCard, kMostCards> cards;
};

}  // namespace vek

#endif
