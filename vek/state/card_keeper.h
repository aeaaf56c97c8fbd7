#ifndef VEK_STATE_CARD_KEEPER_H
#define VEK_STATE_CARD_KEEPER_H

#include <pthread.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "card/simulated_card.h"
#include "card_lock.h"
#include "drivers/driver_core.h"
#include "state/file_guard.h"
#include "state/snapshot.h"
#include "state/state_files.h"
#include "state/state_visitor.h"
#include "vek.h"

namespace vek
{

/// A card whose state is to be kept, as it comes up, with its driver.
struct KeptCard {
    int index;
    SimulatedCard& card;
    DriverCore& driver;
    std::uint64_t description;  ///< Another one for another card.
};

/// Keeps the state of a card in a folder, in which other programs keep that of the same card. The memories of the card
/// are the files themselves. All else is read from a file when somebody has changed it since, and written there when
/// this program has changed it, whenever a thread of this program begins and ends its work with the card. One that is
/// killed in between has done nothing but to the memories.
class CardKeeper final : public CardLock
{
public:
    /// `patience` with others who have the card, in nanoseconds.
    explicit CardKeeper(const KeptCard& kept, std::uint64_t patience = kLockPatience) : kept_(kept), patience_(patience)
    {
    }
    CardKeeper(const CardKeeper&) = delete;
    CardKeeper& operator=(const CardKeeper&) = delete;

    /// Puts the card into the state that is in the folder, which is made if it does not exist and starts with the card
    /// as it comes up. The keeper has to live as long as the program then. VEK_PROTECTED, VEK_BAD_DATA, VEK_IO_ERROR,
    /// VEK_NO_MEMORY or VEK_TIMED_OUT when that cannot be done, with a line on standard error that names the file and
    /// says why. What is in the folder stays as it is then.
    int open(const char* folder);

    /// VEK_TIMED_OUT: another program keeps the card. VEK_BAD_DATA: the file with the state
    /// is damaged. VEK_IO_ERROR: lost().
    int enter() override;
    int leave() override;

    /// Whether a part of the memories or of the state is gone for good.
    bool lost() const { return loss_.lost; }

    /// Spaces of which plain memory must not be used any more when something is lost. They have to live as long as the
    /// keeper.
    void watch(const std::array<AddressSpace*, 4>& exposing) { loss_.exposing = exposing; }

private:
    /// Each field of a state is part of one of the two.
    static constexpr std::size_t kMostBytes = sizeof(SimulatedCard) + sizeof(DriverCore);
    static constexpr std::size_t kMostMemories = 16;
    using Image = std::array<std::uint8_t, kMostBytes>;

    void visit(StateVisitor& visitor);
    std::span<const std::uint8_t> copyOut(Image& image);
    bool copyIn(std::span<const std::uint8_t> image);
    int openFolder(const char* name, Descriptor& folder);
    int makeFolder(const StateEntry& parent, const char* name);
    int makeFiles(const Descriptor& folder, const StatePath& path);
    int makeState(const StateEntry& entry);
    int mapFiles(const Descriptor& folder);
    int mapFile(const StateEntry& entry, std::uint64_t size, Descriptor& file);
    void unmapFiles();
    int begin();
    int readState();
    int lockState();
    int beginWork();
    int endWork();

    KeptCard kept_;
    std::uint64_t patience_;
    SnapshotKind kind_{};
    std::optional<StatePath> path_;  ///< Of the card's folder.
    FileLoss loss_;
    int stateFile_ = -1;
    std::optional<Snapshot> snapshot_;
    std::uint64_t number_ = 0;  ///< Of the state that the card was put into or that was written last.
    Image present_{};           ///< That state.
    Image changed_{};           ///< Where the next one comes about.

    struct Mapping {
        unsigned char* base;
        std::size_t length;
        const char* name;
    };
    std::array<Mapping, kMostMemories> mappings_{};
    std::size_t mappingCount_ = 0;

    /// Of the threads of this program; it may be entered again by the thread that has it.
    pthread_mutex_t mutex_ = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
    std::uint64_t restsUntil_ = 0;  ///< Monotonic nanoseconds; there is no waiting for others until then.
    int depth_ = 0;                 ///< How often it has been entered.
    int refusal_ = VEK_OK;          ///< Why everything is refused until it is left.
    bool complained_ = false;
};

}  // namespace vek

#endif
