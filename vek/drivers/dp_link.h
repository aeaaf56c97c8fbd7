#ifndef VEK_DRIVERS_DP_LINK_H
#define VEK_DRIVERS_DP_LINK_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "drivers/aux_transfer.h"
#include "drivers/dp_controller.h"
#include "drivers/dp_phy.h"
#include "drivers/dpcd.h"

namespace vek
{

/// The limits of VESA DisplayPort 1.2, section 3.5.1.2: how often the lanes are looked at with the same voltage swing,
/// with all of them together, and during channel equalisation.
constexpr int kMaxSameSwing = 5;
constexpr int kMaxClockRecoveryLooks = 10;
constexpr int kMaxEqualisationLooks = 6;

/// Whether every lane that the sink is set to is trained. `trained` is touched on success only. Results as of
/// AuxTransfer.
int senseLink(AuxTransfer& aux, bool& trained);

/// Trains the main link between a PHY and the sink on its AUX channel (VESA DisplayPort 1.2, section 3.5.1.2).
class DpLinkTrainer
{
public:
    /// All have to live as long as the trainer.
    DpLinkTrainer(AuxTransfer& aux, DpPhyDriver& phy) : aux_(aux), phy_(phy) {}

    /// Trains with the highest link rate and the most lanes that both sides know; when that fails, with the next lower
    /// rates, then with half of the lanes and the highest rate again. However it ends, no pattern is sent afterwards.
    /// `link` receives what the link was trained to, on success only.
    /// Returns VEK_OK, VEK_IO_ERROR when the lanes cannot be trained, VEK_BAD_DATA when the sink's capabilities make no
    /// sense, or what the AUX transfer or the PHY answered that failed.
    int train(DpLink& link);

private:
    /// The fields from LANE0_1_STATUS to ADJUST_REQUEST_LANE2_3.
    using LaneFields = std::array<std::uint8_t, dpcd::kAdjustRequestLane23 + 1 - dpcd::kLane01Status>;

    /// What a part of the training comes to: a result that is not VEK_OK ends it all.
    struct Outcome {
        int result = VEK_OK;
        bool done = false;
    };

    int readCapabilities();
    Outcome stepDown(DpLink& link);
    Outcome trainWith(std::uint8_t rate, std::uint8_t lanes);
    int setUp(std::uint8_t rate, std::uint8_t lanes);
    Outcome recoverClock();
    Outcome equalise();
    int sendPattern(std::uint8_t pattern);
    int drive();
    int look(std::uint32_t microseconds, LaneFields& fields);
    void adjust(const LaneFields& fields);
    bool swingIsExhausted() const;
    std::array<std::uint8_t, dpcd::kMaxLanes> laneSettings() const;

    AuxTransfer& aux_;
    DpPhyDriver& phy_;

    std::uint8_t maxRate_ = 0;
    std::uint8_t maxLanes_ = 0;
    bool enhancedFraming_ = false;
    bool pattern3_ = false;
    std::uint32_t readInterval_ = 0;  ///< Microseconds; 0 when the sink is content with the standard's.

    std::uint8_t lanes_ = 0;
    LaneDrives drives_{};
};

}  // namespace vek

#endif
