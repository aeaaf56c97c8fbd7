#include "drivers/dp_link.h"

#include <algorithm>
#include <span>

namespace vek
{
namespace
{

constexpr std::uint8_t kPattern1 = 1;
constexpr std::uint8_t kPattern2 = 2;
constexpr std::uint8_t kPattern3 = 3;

constexpr std::uint8_t kMaxLevel = 3;

constexpr std::uint32_t kClockRecoveryMicroseconds = 100;
constexpr std::uint32_t kEqualisationMicroseconds = 400;
constexpr std::uint32_t kReadIntervalUnit = 4000;
constexpr std::uint8_t kMaxReadIntervalUnits = 4;

/// The four bits of a lane out of fields with two lanes each.
std::uint8_t laneBits(const std::uint8_t* fields, std::size_t lane)
{
    constexpr std::uint8_t kMask = (1U << dpcd::kLaneBits) - 1;
    return fields[lane / 2] >> (lane % 2 * dpcd::kLaneBits) & kMask;
}

/// Whether the status of all lanes has some bits; `fields` begin with LANE0_1_STATUS.
bool lanesHave(const std::uint8_t* fields, std::size_t lanes, std::uint8_t bits)
{
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        if ((laneBits(fields, lane) & bits) != bits) {
            return false;
        }
    }
    return true;
}

bool lanesAreTrained(const std::uint8_t* fields, std::size_t lanes)
{
    constexpr std::size_t kAlign = dpcd::kLaneAlignStatusUpdated - dpcd::kLane01Status;
    return lanesHave(fields, lanes, dpcd::kLaneTrained) && (fields[kAlign] & dpcd::kInterlaneAlignDone) != 0;
}

/// The lane count, of those that links have, next to what a sink says.
std::uint8_t usableLanes(unsigned lanes)
{
    if (lanes >= dpcd::kMaxLanes) {
        return dpcd::kMaxLanes;
    }
    return lanes >= 2 ? 2 : static_cast<std::uint8_t>(lanes);
}

}  // namespace

int senseLink(AuxTransfer& aux, bool& trained)
{
    std::uint8_t laneCount = 0;
    int result = aux.readDpcd(dpcd::kLaneCountSet, laneCount);
    if (result != VEK_OK) {
        return result;
    }
    std::array<std::uint8_t, dpcd::kLaneAlignStatusUpdated + 1 - dpcd::kLane01Status> fields{};
    result = aux.readDpcd(dpcd::kLane01Status, fields);
    if (result == VEK_OK) {
        const unsigned lanes = laneCount & dpcd::kLaneCountMask;
        trained = lanes != 0 && lanes <= dpcd::kMaxLanes && lanesAreTrained(fields.data(), lanes);
    }
    return result;
}

int DpLinkTrainer::readCapabilities()
{
    std::array<std::uint8_t, dpcd::kTrainingAuxReadInterval + 1> fields{};
    const int result = aux_.readDpcd(dpcd::kRevision, fields);
    if (result != VEK_OK) {
        return result;
    }
    const std::uint8_t laneCount = fields[dpcd::kMaxLaneCount];
    maxRate_ = fields[dpcd::kMaxLinkRate];
    maxLanes_ = usableLanes(laneCount & dpcd::kLaneCountMask);
    enhancedFraming_ = (laneCount & dpcd::kEnhancedFraming) != 0;
    pattern3_ = (laneCount & dpcd::kTrainingPattern3Supported) != 0;
    const std::uint8_t units = fields[dpcd::kTrainingAuxReadInterval] & dpcd::kAuxReadIntervalMask;
    readInterval_ = std::min(units, kMaxReadIntervalUnits) * kReadIntervalUnit;
    return maxLanes_ == 0 || maxRate_ < dpcd::kLinkRates.back() ? VEK_BAD_DATA : VEK_OK;
}

/// The DPCD's TRAINING_LANEx_SET for the present drives.
std::array<std::uint8_t, dpcd::kMaxLanes> DpLinkTrainer::laneSettings() const
{
    std::array<std::uint8_t, dpcd::kMaxLanes> settings{};
    for (std::size_t lane = 0; lane < lanes_; ++lane) {
        const auto [swing, preEmphasis] = drives_[lane];
        unsigned setting = swing | unsigned{preEmphasis} << dpcd::kPreEmphasisShift;
        setting |= swing == kMaxLevel ? dpcd::kMaxSwingReached : 0U;
        setting |= preEmphasis == kMaxLevel ? dpcd::kMaxPreEmphasisReached : 0U;
        settings[lane] = static_cast<std::uint8_t>(setting);
    }
    return settings;
}

/// Sends a pattern, or with 0 none, and tells the sink, together with the drives.
int DpLinkTrainer::sendPattern(std::uint8_t pattern)
{
    const int result = phy_.sendPattern(pattern);
    if (result != VEK_OK) {
        return result;
    }
    if (pattern == 0) {
        return aux_.writeDpcd(dpcd::kTrainingPatternSet, 0);
    }
    std::array<std::uint8_t, 1 + dpcd::kMaxLanes> fields{};
    fields[0] = pattern | dpcd::kScramblingDisable;
    std::ranges::copy(laneSettings(), fields.begin() + 1);
    return aux_.writeDpcd(dpcd::kTrainingPatternSet, std::span(fields).first(std::size_t{1} + lanes_));
}

/// Drives the lanes as they are to be driven and tells the sink.
int DpLinkTrainer::drive()
{
    const int result = phy_.drive(drives_);
    if (result != VEK_OK) {
        return result;
    }
    const auto settings = laneSettings();
    return aux_.writeDpcd(dpcd::kTrainingLane0Set, std::span(settings).first(lanes_));
}

int DpLinkTrainer::look(std::uint32_t microseconds, LaneFields& fields)
{
    aux_.pause().microseconds(readInterval_ != 0 ? readInterval_ : microseconds);
    return aux_.readDpcd(dpcd::kLane01Status, fields);
}

/// Takes the drives over that the sink asks for; swing and pre-emphasis come to the highest level at most together.
void DpLinkTrainer::adjust(const LaneFields& fields)
{
    const std::uint8_t* requests = &fields[dpcd::kAdjustRequestLane01 - dpcd::kLane01Status];
    for (std::size_t lane = 0; lane < lanes_; ++lane) {
        const std::uint8_t request = laneBits(requests, lane);
        const std::uint8_t swing = request & dpcd::kLevelMask;
        const std::uint8_t preEmphasis = request >> dpcd::kAdjustPreEmphasisShift & dpcd::kLevelMask;
        drives_[lane] = {.swing = swing,
                         .preEmphasis = std::min(preEmphasis, static_cast<std::uint8_t>(kMaxLevel - swing))};
    }
}

bool DpLinkTrainer::swingIsExhausted() const
{
    const auto driven = std::span(drives_).first(lanes_);
    return std::ranges::all_of(driven, [](const LaneDrive& lane) { return lane.swing == kMaxLevel; });
}

int DpLinkTrainer::setUp(std::uint8_t rate, std::uint8_t lanes)
{
    lanes_ = lanes;
    drives_ = {};
    int result = phy_.start(rate, lanes);
    if (result == VEK_OK) {
        result = phy_.drive(drives_);
    }
    if (result == VEK_OK) {
        const auto framing = enhancedFraming_ ? dpcd::kEnhancedFraming : std::uint8_t{0};
        const std::array<std::uint8_t, 2> link{rate, static_cast<std::uint8_t>(lanes | framing)};
        result = aux_.writeDpcd(dpcd::kLinkRateSet, link);
    }
    if (result == VEK_OK) {
        const std::array<std::uint8_t, 2> noSpreadAndCoding{0, dpcd::kCoding8b10b};
        result = aux_.writeDpcd(dpcd::kDownspreadControl, noSpreadAndCoding);
    }
    return result;
}

DpLinkTrainer::Outcome DpLinkTrainer::recoverClock()
{
    int result = sendPattern(kPattern1);
    int sameSwing = 1;
    for (int looks = 0; result == VEK_OK && looks < kMaxClockRecoveryLooks; ++looks) {
        LaneFields fields{};
        result = look(kClockRecoveryMicroseconds, fields);
        if (result != VEK_OK) {
            break;
        }
        if (lanesHave(fields.data(), lanes_, dpcd::kClockRecoveryDone)) {
            return {.done = true};
        }
        if (swingIsExhausted()) {
            break;
        }
        const LaneDrives before = drives_;
        adjust(fields);
        const bool same = std::ranges::equal(before, drives_, {}, &LaneDrive::swing, &LaneDrive::swing);
        sameSwing = same ? sameSwing + 1 : 1;
        if (sameSwing > kMaxSameSwing) {
            break;
        }
        result = drive();
    }
    return {.result = result};
}

DpLinkTrainer::Outcome DpLinkTrainer::equalise()
{
    int result = sendPattern(pattern3_ ? kPattern3 : kPattern2);
    for (int looks = 0; result == VEK_OK && looks < kMaxEqualisationLooks; ++looks) {
        LaneFields fields{};
        result = look(kEqualisationMicroseconds, fields);
        if (result != VEK_OK || !lanesHave(fields.data(), lanes_, dpcd::kClockRecoveryDone)) {
            break;
        }
        if (lanesAreTrained(fields.data(), lanes_)) {
            return {.done = true};
        }
        adjust(fields);
        result = drive();
    }
    return {.result = result};
}

DpLinkTrainer::Outcome DpLinkTrainer::trainWith(std::uint8_t rate, std::uint8_t lanes)
{
    const int result = setUp(rate, lanes);
    if (result != VEK_OK) {
        return {.result = result};
    }
    const Outcome recovered = recoverClock();
    return recovered.done ? equalise() : recovered;
}

DpLinkTrainer::Outcome DpLinkTrainer::stepDown(DpLink& link)
{
    for (std::uint8_t lanes = maxLanes_; lanes > 0; lanes = static_cast<std::uint8_t>(lanes / 2)) {
        for (const std::uint8_t rate : dpcd::kLinkRates) {
            if (rate > maxRate_) {
                continue;
            }
            const Outcome outcome = trainWith(rate, lanes);
            if (outcome.done) {
                link = {.rate = rate, .lanes = lanes, .enhancedFraming = enhancedFraming_};
            }
            if (outcome.done || outcome.result != VEK_OK) {
                return outcome;
            }
        }
    }
    return {.result = VEK_IO_ERROR};
}

int DpLinkTrainer::train(DpLink& link)
{
    int result = readCapabilities();
    if (result == VEK_OK) {
        result = aux_.writeDpcd(dpcd::kSetPower, dpcd::kPowerD0);
    }
    if (result != VEK_OK) {
        return result;
    }
    DpLink trained{};
    result = stepDown(trained).result;
    const int ended = sendPattern(0);
    result = result == VEK_OK ? ended : result;
    if (result == VEK_OK) {
        link = trained;
    }
    return result;
}

}  // namespace vek
