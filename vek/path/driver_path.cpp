#include "path/driver_path.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "card/builtin_cards.h"
#include "card/kernel_memory.h"
#include "card/simulated_card.h"
#include "description/reader.h"
#include "path/described_cards.h"
#include "path/path_to_card.h"
#include "state/kept_path.h"

namespace vek
{
namespace
{

constexpr int kBuiltinCards = 2;

// Cards keep their state while the program runs, as cards in their slots do, whichever of them is open.
constinit SimulatedCard firstCard{kFirstBuiltinCard};
constinit SimulatedCard secondCard{kSecondBuiltinCard};

// Their driver, which looks after each of them.
constinit DriverCore firstDriver{kDriverVersion, kFirstBuiltinCard.chip.videoMemorySize};
constinit DriverCore secondDriver{kDriverVersion, kSecondBuiltinCard.chip.videoMemorySize};

// The host has one kernel, whatever card is open.
constinit KernelMemory kernelMemory;

constinit const std::array<AccessPath, kBuiltinCards> builtinPaths{
    pathTo(0, kFirstBuiltinCard.chip, firstCard, firstDriver, kernelMemory),
    pathTo(1, kSecondBuiltinCard.chip, secondCard, secondDriver, kernelMemory)};

// Of the cards that keep their state, those that have been opened.
constinit std::array<const AccessPath*, kMostCards> keptPaths{};

FittedCard builtinCard(int index)
{
    constexpr std::uint64_t kFirstFingerprint = fingerprintOf(kFirstBuiltinCard);
    constexpr std::uint64_t kSecondFingerprint = fingerprintOf(kSecondBuiltinCard);
    return index == 0 ? FittedCard{&builtinPaths[0], &firstCard, &firstDriver, kFirstFingerprint}
                      : FittedCard{&builtinPaths[1], &secondCard, &secondDriver, kSecondFingerprint};
}

/// Lets a card keep its state in a folder from now on.
OpenedPath openKeptPath(int index, const FittedCard& fitted, const char* folder)
{
    const KeptCard card{index, *fitted.card, *fitted.driver, fitted.fingerprint};
    const OpenedPath opened = keepPath(*fitted.path, card, folder);
    if (opened.result == VEK_OK) {
        keptPaths[static_cast<std::size_t>(index)] = opened.path;
    }
    return opened;
}

}  // namespace

int fitCards()
{
    if (describedCardCount() != 0) {
        return VEK_OK;
    }
    const char* const file = secure_getenv(VEK_CARD_DESCRIPTION_VARIABLE);
    return file == nullptr || file[0] == '\0' ? VEK_OK : fitDescribedCards(file, kernelMemory);
}

int driverCards()
{
    const int described = describedCardCount();
    return described == 0 ? kBuiltinCards : described;
}

FittedCard fittedCard(int card)
{
    if (card < 0 || card >= driverCards()) {
        return {};
    }
    return describedCardCount() == 0 ? builtinCard(card) : describedCard(card);
}

const AccessPath* driverPath(int card)
{
    return fittedCard(card).path;
}

OpenedPath openDriverPath(int card)
{
    const int result = fitCards();
    if (result != VEK_OK) {
        return {result, nullptr};
    }
    const FittedCard fitted = fittedCard(card);
    if (fitted.path == nullptr) {
        return {VEK_NO_RESPONSE, nullptr};
    }
    const AccessPath* const kept = keptPaths[static_cast<std::size_t>(card)];
    if (kept != nullptr) {
        return {VEK_OK, kept};
    }
    const char* const folder = stateFolder();
    return folder == nullptr ? OpenedPath{VEK_OK, fitted.path} : openKeptPath(card, fitted, folder);
}

}  // namespace vek
