#include "card/dp_sink.h"

namespace vek
{
namespace
{

constexpr unsigned kPattern1 = 1;
constexpr unsigned kPattern3 = 3;

constexpr std::uint8_t kEdpRevision13 = 0x02;
constexpr std::uint8_t kHardwareRevision10 = 0x10;
constexpr std::uint8_t kFirmwareMajor = 0x01;

bool isNative(AuxCommand command)
{
    return command == AuxCommand::kNativeRead || command == AuxCommand::kNativeWrite;
}

bool wellFormed(const AuxRequest& request)
{
    return request.address < kAuxAddressEnd && request.length <= kMaxAuxBytes &&
           (request.length != 0 || !isNative(request.command));
}

/// A write that was not done whole: the reply carries the number of bytes that were written.
AuxReply stoppedAfter(AuxAnswer answer, std::size_t written)
{
    AuxReply reply{.answer = answer, .length = 1};
    reply.data[0] = static_cast<std::uint8_t>(written);
    return reply;
}

/// The bits of the lanes 0 to `lanes` - 1.
unsigned laneMask(unsigned lanes)
{
    return (1U << lanes) - 1;
}

/// Of two lanes, four bits each.
std::uint8_t pair(std::uint8_t even, std::uint8_t odd)
{
    return static_cast<std::uint8_t>(even | odd << dpcd::kLaneBits);
}

}  // namespace

AuxReply DpSink::transact(const AuxRequest& request)
{
    if (!facts_.attached() || facts_.manner == AuxManner::kSilent) {
        return {.answer = AuxAnswer::kNone};
    }
    if (facts_.manner == AuxManner::kDefers) {
        return {.answer = AuxAnswer::kDefer};
    }
    if (facts_.manner == AuxManner::kRefuses || !wellFormed(request)) {
        return {.answer = AuxAnswer::kNack};
    }
    if (deferred_ < facts_.deferrals) {
        ++deferred_;
        return {.answer = AuxAnswer::kDefer};
    }
    deferred_ = 0;
    return serve(request);
}

AuxReply DpSink::serve(const AuxRequest& request)
{
    switch (request.command) {
        case AuxCommand::kNativeRead:
            return readFields(request);
        case AuxCommand::kNativeWrite:
            return writeFields(request);
        case AuxCommand::kI2cRead:
        case AuxCommand::kI2cWrite:
            return transferI2c(request);
        case AuxCommand::kI2cWriteStatusUpdate:
            // Bytes reach the I2C devices at once, so no write is ever under way.
            return {.answer = AuxAnswer::kAck};
    }
    return {.answer = AuxAnswer::kNack};
}

AuxReply DpSink::readFields(const AuxRequest& request)
{
    AuxReply reply{.answer = AuxAnswer::kAck, .length = request.length};
    for (std::uint8_t index = 0; index < request.length; ++index) {
        reply.data[index] = field(request.address + index);
    }
    return reply;
}

AuxReply DpSink::writeFields(const AuxRequest& request)
{
    for (std::uint8_t index = 0; index < request.length; ++index) {
        if (!setField(request.address + index, request.data[index])) {
            return stoppedAfter(AuxAnswer::kNack, index);
        }
    }
    return {.answer = AuxAnswer::kAck};
}

std::uint8_t DpSink::capability(std::uint32_t address) const
{
    switch (address) {
        case dpcd::kRevision:
            return facts_.revision;
        case dpcd::kMaxLinkRate:
            return facts_.maxRate;
        case dpcd::kMaxLaneCount:
            return static_cast<std::uint8_t>(facts_.maxLanes | dpcd::kEnhancedFraming |
                                             (facts_.trainingPattern3 ? dpcd::kTrainingPattern3Supported : 0));
        case dpcd::kMaxDownspread:
            return dpcd::kDownspread;
        case dpcd::kMainLinkChannelCoding:
            return dpcd::kCoding8b10b;
        case dpcd::kReceivePort0Cap0:
            return dpcd::kLocalEdidPresent;
        case dpcd::kI2cSpeedCapabilities:
            return dpcd::kI2cSpeed100k;
        case dpcd::kEdpConfigurationCap:
            return facts_.panel ? dpcd::kAlternateScramblerReset | dpcd::kDisplayControlCapable : 0;
        default:
            return 0;
    }
}

std::uint8_t DpSink::identity(std::uint32_t address) const
{
    if (address >= dpcd::kSinkOui && address < dpcd::kSinkOui + facts_.oui.size()) {
        return facts_.oui[address - dpcd::kSinkOui];
    }
    if (address >= dpcd::kSinkDeviceName && address < dpcd::kSinkDeviceName + facts_.name.size()) {
        return static_cast<std::uint8_t>(facts_.name[address - dpcd::kSinkDeviceName]);
    }
    switch (address) {
        case dpcd::kSinkHardwareRevision:
            return kHardwareRevision10;
        case dpcd::kSinkFirmwareRevision:
            return kFirmwareMajor;
        case dpcd::kEdpRevision:
            return facts_.panel ? kEdpRevision13 : 0;
        case dpcd::kEdpGeneralCapability1:
            return facts_.panel ? dpcd::kSelfTestOverAux : 0;
        default:
            return 0;
    }
}

std::uint8_t DpSink::status(std::uint32_t address)
{
    const MainLink link = phy_.mainLink();
    watchLink(link);
    switch (address) {
        case dpcd::kSinkCount:
            return 1;
        case dpcd::kLane01Status:
            return pair(laneStatus(0), laneStatus(1));
        case dpcd::kLane23Status:
            return pair(laneStatus(2), laneStatus(3));
        case dpcd::kLaneAlignStatusUpdated:
            return aligned() ? dpcd::kInterlaneAlignDone : 0;
        case dpcd::kSinkStatus:
            return aligned() && patternSet() == 0 ? dpcd::kReceivePort0InSync : 0;
        case dpcd::kAdjustRequestLane01:
            return pair(laneAdjustment(link, 0), laneAdjustment(link, 1));
        case dpcd::kAdjustRequestLane23:
            return pair(laneAdjustment(link, 2), laneAdjustment(link, 3));
        default:
            return 0;
    }
}

std::uint8_t DpSink::field(std::uint32_t address)
{
    if (address < dpcd::kLinkRateSet) {
        return capability(address);
    }
    if (address < dpcd::kLinkRateSet + link_.size()) {
        return linkField(address);
    }
    if (address >= dpcd::kSinkCount && address <= dpcd::kAdjustRequestLane23) {
        return status(address);
    }
    if (address >= dpcd::kSourceOui && address < dpcd::kSourceFieldsEnd) {
        return source_[address - dpcd::kSourceOui];
    }
    switch (address) {
        case dpcd::kEdpConfigurationSet:
            return edpConfiguration_;
        case dpcd::kSetPower:
            return power_;
        default:
            return identity(address);
    }
}

bool DpSink::setField(std::uint32_t address, std::uint8_t value)
{
    if (address >= dpcd::kLinkRateSet && address < dpcd::kLinkRateSet + link_.size()) {
        link_[address - dpcd::kLinkRateSet] = value;
        if (address <= dpcd::kLaneCountSet) {
            loseLink();
        }
        return true;
    }
    if (address >= dpcd::kSourceOui && address < dpcd::kSourceFieldsEnd) {
        source_[address - dpcd::kSourceOui] = value;
        return true;
    }
    switch (address) {
        case dpcd::kSetPower:
            power_ = value;
            if (value != dpcd::kPowerD0) {
                loseLink();
            }
            return true;
        case dpcd::kDeviceServiceIrqVector:
            // Its bits are cleared by writing them as 1; none is ever set.
            return true;
        case dpcd::kEdpConfigurationSet:
            if (facts_.panel) {
                edpConfiguration_ = value;
            }
            return facts_.panel;
        default:
            return false;
    }
}

bool DpSink::receives(const MainLink& link) const
{
    const unsigned lanes = lanesSet();
    return power_ == dpcd::kPowerD0 && link.rate != 0 && link.rate == linkField(dpcd::kLinkRateSet) &&
           link.rate <= facts_.maxRate && link.rate <= facts_.cableRate && lanes != 0 && lanes <= facts_.maxLanes &&
           link.lanes >= lanes && link.pattern == patternSet() &&
           (link.pattern != kPattern3 || facts_.trainingPattern3);
}

void DpSink::loseLink()
{
    recovered_ = 0;
    equalised_ = 0;
}

void DpSink::watchLink(const MainLink& link)
{
    if (!receives(link)) {
        loseLink();
        return;
    }
    if (link.pattern == 0) {
        return;
    }
    unsigned swung = 0;
    unsigned emphasised = 0;
    for (unsigned lane = 0; lane < lanesSet(); ++lane) {
        swung |= link.drives[lane].swing >= facts_.swing ? 1U << lane : 0;
        emphasised |= link.drives[lane].preEmphasis >= facts_.preEmphasis ? 1U << lane : 0;
    }
    if (link.pattern == kPattern1) {
        recovered_ = static_cast<std::uint8_t>(swung);
        equalised_ = 0;
    } else {
        recovered_ = static_cast<std::uint8_t>(recovered_ & swung);
        equalised_ = static_cast<std::uint8_t>(recovered_ & emphasised);
    }
}

bool DpSink::aligned() const
{
    return lanesSet() != 0 && equalised_ == laneMask(lanesSet());
}

std::uint8_t DpSink::laneStatus(unsigned lane) const
{
    if ((equalised_ >> lane & 1) != 0) {
        return dpcd::kLaneTrained;
    }
    return (recovered_ >> lane & 1) != 0 ? dpcd::kClockRecoveryDone : 0;
}

std::uint8_t DpSink::laneAdjustment(const MainLink& link, unsigned lane) const
{
    if (!receives(link) || lane >= lanesSet()) {
        return 0;
    }
    const auto [swing, preEmphasis] = link.drives[lane];
    const unsigned wantedSwing = swing < facts_.swing ? swing + 1U : swing;
    const bool moreEmphasis = link.pattern > kPattern1 && preEmphasis < facts_.preEmphasis;
    const unsigned wantedPreEmphasis = moreEmphasis ? preEmphasis + 1U : preEmphasis;
    return static_cast<std::uint8_t>(wantedSwing | wantedPreEmphasis << dpcd::kAdjustPreEmphasisShift);
}

bool DpSink::addressI2c(const AuxRequest& request)
{
    i2cOpen_ = true;
    i2cReading_ = request.command == AuxCommand::kI2cRead;
    i2cDevice_ = request.address;
    I2cBus& bus = *ddc_.bus();
    bus.start();
    const auto addressByte = static_cast<std::uint8_t>(request.address << 1 | (i2cReading_ ? 1U : 0U));
    return request.address <= kMaxI2cDevice && bus.write(addressByte) == I2cStep::kDone;
}

AuxReply DpSink::moveI2cBytes(const AuxRequest& request)
{
    I2cBus& bus = *ddc_.bus();
    AuxReply reply{.answer = AuxAnswer::kAck};
    for (std::uint8_t index = 0; index < request.length; ++index) {
        if (i2cReading_) {
            const bool more = request.middleOfTransaction || index + 1 < request.length;
            reply.data[index] = bus.read(more).value;
            ++reply.length;
        } else if (bus.write(request.data[index]) != I2cStep::kDone) {
            return stoppedAfter(AuxAnswer::kI2cNack, index);
        }
    }
    return reply;
}

AuxReply DpSink::transferI2c(const AuxRequest& request)
{
    const bool reading = request.command == AuxCommand::kI2cRead;
    const bool goesOn = i2cOpen_ && i2cDevice_ == request.address && i2cReading_ == reading;
    const bool addressOnly = request.length == 0 && request.middleOfTransaction;
    AuxReply reply{.answer = AuxAnswer::kAck};
    if ((!goesOn || addressOnly) && !addressI2c(request)) {
        reply = stoppedAfter(AuxAnswer::kI2cNack, 0);
    } else {
        reply = moveI2cBytes(request);
    }
    if (!request.middleOfTransaction || reply.answer != AuxAnswer::kAck) {
        ddc_.bus()->stop();
        i2cOpen_ = false;
    }
    return reply;
}

}  // namespace vek
