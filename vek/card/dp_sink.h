#ifndef VEK_CARD_DP_SINK_H
#define VEK_CARD_DP_SINK_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "aux_channel.h"
#include "card/dp_phy.h"
#include "card/facts_hash.h"
#include "card/monitor_ddc.h"
#include "drivers/dpcd.h"
#include "drivers/i2c_transfer.h"

namespace vek
{

/// How a sink behaves on its AUX channel.
enum class AuxManner : std::uint8_t {
    kServes,
    kDefers,   ///< Every request, for ever.
    kSilent,   ///< Never replies.
    kRefuses,  ///< Every request.
};

/// What tells one DisplayPort sink, and the cable to it, from another.
struct DpSinkFacts {
    std::uint8_t revision = 0;  ///< DPCD revision, 0x12 for 1.2.
    std::uint8_t maxRate = 0;   ///< In units of 0.27 Gbit/s a lane.
    std::uint8_t maxLanes = 0;  ///< 0 when there is no sink.
    bool trainingPattern3 = false;
    bool panel = false;          ///< An eDP panel rather than a monitor.
    std::uint8_t cableRate = 0;  ///< The highest link rate that comes through well enough.
    std::uint8_t swing = 0;      ///< The levels that the lanes have to be driven with, together 3 at most.
    std::uint8_t preEmphasis = 0;
    std::array<std::uint8_t, 3> oui{};               ///< The maker's, IEEE.
    std::array<char, dpcd::kDeviceNameSize> name{};  ///< Filled up with 0.
    std::span<const std::uint8_t> edid{};
    AuxManner manner = AuxManner::kServes;
    std::uint8_t deferrals = 0;  ///< How often it defers every request before it serves it.

    constexpr bool attached() const { return maxLanes != 0; }
};

/// Tells one sink, as it was described, from another.
constexpr std::uint64_t hashOf(const DpSinkFacts& facts)
{
    FactsHash hash;
    for (const std::uint8_t fact : {facts.revision, facts.maxRate, facts.maxLanes, facts.cableRate, facts.swing,
                                    facts.preEmphasis, facts.deferrals}) {
        hash.add(fact);
    }
    hash.add(facts.trainingPattern3 ? 1 : 0);
    hash.add(facts.panel ? 1 : 0);
    hash.add(static_cast<std::uint64_t>(facts.manner));
    hash.add(facts.oui);
    hash.add(std::string_view(facts.name.data(), facts.name.size()));
    hash.add(facts.edid);
    return hash.value();
}

/// A DisplayPort sink at the end of an AUX channel and a main link: a DPCD (VESA DisplayPort 1.2, section 2.9.3) and
/// behind it, on I2C, an EDID memory with its segment pointer.
///
/// DPCD fields that the sink does not have read 0. A write to those, or to one that is read-only, is refused, and the
/// reply says how many bytes before it were written. The status fields are worked out from the main link whenever they
/// are read: a lane has its clock recovered once pattern 1 comes in with the voltage swing that it wants, and is
/// equalised once pattern 2 or 3 comes in with the pre-emphasis that it wants, for which the sink asks level by level.
class DpSink final : public AuxChannel
{
public:
    /// The PHY that drives the main link, and the EDID, have to live as long as the sink.
    constexpr DpSink(const DpSinkFacts& facts, const DpPhy& phy)
        : facts_(facts), identity_(hashOf(facts)), phy_(phy), ddc_(facts.edid)
    {
    }

    AuxReply transact(const AuxRequest& request) override;

    void setManner(AuxManner manner) { facts_.manner = manner; }

    /// Whether a panel shows its self-test picture.
    bool showsSelfTest() const { return (edpConfiguration_ & dpcd::kPanelSelfTestEnable) != 0; }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit.madeOf(identity_, [&] {
            visit(ddc_, link_, source_, edpConfiguration_, power_, deferred_, recovered_, equalised_, i2cOpen_,
                  i2cReading_, i2cDevice_);
        });
    }

private:
    static constexpr std::size_t kLinkFields = dpcd::kMainLinkChannelCodingSet + 1 - dpcd::kLinkRateSet;
    static constexpr std::size_t kSourceFields = dpcd::kSourceFieldsEnd - dpcd::kSourceOui;

    AuxReply serve(const AuxRequest& request);
    AuxReply readFields(const AuxRequest& request);
    AuxReply writeFields(const AuxRequest& request);
    std::uint8_t field(std::uint32_t address);
    std::uint8_t capability(std::uint32_t address) const;
    std::uint8_t status(std::uint32_t address);
    std::uint8_t identity(std::uint32_t address) const;
    bool setField(std::uint32_t address, std::uint8_t value);

    std::uint8_t linkField(std::uint32_t address) const { return link_[address - dpcd::kLinkRateSet]; }
    unsigned lanesSet() const { return linkField(dpcd::kLaneCountSet) & dpcd::kLaneCountMask; }
    unsigned patternSet() const { return linkField(dpcd::kTrainingPatternSet) & dpcd::kTrainingPatternMask; }
    bool receives(const MainLink& link) const;
    void watchLink(const MainLink& link);
    void loseLink();
    bool aligned() const;
    std::uint8_t laneStatus(unsigned lane) const;
    std::uint8_t laneAdjustment(const MainLink& link, unsigned lane) const;

    AuxReply transferI2c(const AuxRequest& request);
    AuxReply moveI2cBytes(const AuxRequest& request);
    bool addressI2c(const AuxRequest& request);

    DpSinkFacts facts_;
    std::uint64_t identity_;
    const DpPhy& phy_;
    DdcConnector ddc_;

    std::array<std::uint8_t, kLinkFields> link_{};
    std::array<std::uint8_t, kSourceFields> source_{};
    std::uint8_t edpConfiguration_ = 0;
    std::uint8_t power_ = dpcd::kPowerD0;
    std::uint8_t deferred_ = 0;  ///< How often the present request has been deferred.
    // One bit a lane.
    std::uint8_t recovered_ = 0;
    std::uint8_t equalised_ = 0;

    // The I2C transaction that is under way.
    bool i2cOpen_ = false;
    bool i2cReading_ = false;
    std::uint32_t i2cDevice_ = 0;
};

}  // namespace vek

#endif
