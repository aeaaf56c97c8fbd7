#ifndef VEK_DRIVERS_DPCD_H
#define VEK_DRIVERS_DPCD_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

/// The fields of a sink's DPCD that are used here: VESA DisplayPort 1.2, section 2.9.3, and VESA eDP 1.3, section 3.
namespace vek::dpcd
{

constexpr std::size_t kMaxLanes = 4;

// Receiver capabilities.
constexpr std::uint32_t kRevision = 0x00000;
constexpr std::uint32_t kMaxLinkRate = 0x00001;
constexpr std::uint32_t kMaxLaneCount = 0x00002;
constexpr std::uint32_t kMaxDownspread = 0x00003;
constexpr std::uint32_t kMainLinkChannelCoding = 0x00006;
constexpr std::uint32_t kReceivePort0Cap0 = 0x00008;
constexpr std::uint32_t kI2cSpeedCapabilities = 0x0000c;
constexpr std::uint32_t kEdpConfigurationCap = 0x0000d;
constexpr std::uint32_t kTrainingAuxReadInterval = 0x0000e;

constexpr std::uint8_t kLaneCountMask = 0x1f;
constexpr std::uint8_t kTrainingPattern3Supported = 1U << 6;
constexpr std::uint8_t kEnhancedFraming = 1U << 7;  ///< In MAX_LANE_COUNT and in LANE_COUNT_SET.
constexpr std::uint8_t kDownspread = 1U << 0;
constexpr std::uint8_t kCoding8b10b = 1U << 0;  ///< In MAIN_LINK_CHANNEL_CODING and in MAIN_LINK_CHANNEL_CODING_SET.
constexpr std::uint8_t kLocalEdidPresent = 1U << 1;
constexpr std::uint8_t kI2cSpeed100k = 1U << 3;
constexpr std::uint8_t kAlternateScramblerReset = 1U << 0;
constexpr std::uint8_t kDisplayControlCapable = 1U << 3;
constexpr std::uint8_t kAuxReadIntervalMask = 0x7f;

// Link configuration.
constexpr std::uint32_t kLinkRateSet = 0x00100;
constexpr std::uint32_t kLaneCountSet = 0x00101;
constexpr std::uint32_t kTrainingPatternSet = 0x00102;
constexpr std::uint32_t kTrainingLane0Set = 0x00103;
constexpr std::uint32_t kDownspreadControl = 0x00107;
constexpr std::uint32_t kMainLinkChannelCodingSet = 0x00108;
constexpr std::uint32_t kEdpConfigurationSet = 0x0010a;

constexpr std::uint8_t kTrainingPatternMask = 0x03;
constexpr std::uint8_t kScramblingDisable = 1U << 5;
constexpr std::uint8_t kMaxSwingReached = 1U << 2;
constexpr unsigned kPreEmphasisShift = 3;
constexpr std::uint8_t kMaxPreEmphasisReached = 1U << 5;
constexpr std::uint8_t kLevelMask = 0x03;  ///< Of a voltage swing or a pre-emphasis, which have the levels 0 to 3.
constexpr std::uint8_t kPanelSelfTestEnable = 1U << 7;

// Link and sink status.
constexpr std::uint32_t kSinkCount = 0x00200;
constexpr std::uint32_t kDeviceServiceIrqVector = 0x00201;
constexpr std::uint32_t kLane01Status = 0x00202;
constexpr std::uint32_t kLane23Status = 0x00203;
constexpr std::uint32_t kLaneAlignStatusUpdated = 0x00204;
constexpr std::uint32_t kSinkStatus = 0x00205;
constexpr std::uint32_t kAdjustRequestLane01 = 0x00206;
constexpr std::uint32_t kAdjustRequestLane23 = 0x00207;

// Four bits a lane, the even lane low.
constexpr unsigned kLaneBits = 4;
constexpr std::uint8_t kClockRecoveryDone = 1U << 0;
constexpr std::uint8_t kChannelEqDone = 1U << 1;
constexpr std::uint8_t kSymbolLocked = 1U << 2;
constexpr std::uint8_t kLaneTrained = kClockRecoveryDone | kChannelEqDone | kSymbolLocked;
constexpr std::uint8_t kInterlaneAlignDone = 1U << 0;
constexpr std::uint8_t kReceivePort0InSync = 1U << 0;
constexpr unsigned kAdjustPreEmphasisShift = 2;

// Fields of the source and of the sink themselves.
constexpr std::uint32_t kSourceOui = 0x00300;
constexpr std::uint32_t kSourceFieldsEnd = 0x0030c;
constexpr std::uint32_t kSinkOui = 0x00400;
constexpr std::uint32_t kSinkDeviceName = 0x00403;
constexpr std::size_t kDeviceNameSize = 6;
constexpr std::uint32_t kSinkHardwareRevision = 0x00409;
constexpr std::uint32_t kSinkFirmwareRevision = 0x0040a;

// Sink control.
constexpr std::uint32_t kSetPower = 0x00600;
constexpr std::uint8_t kPowerD0 = 1;  ///< Normal operation; 2 is power-down.

// eDP panels.
constexpr std::uint32_t kEdpRevision = 0x00700;
constexpr std::uint32_t kEdpGeneralCapability1 = 0x00701;
constexpr std::uint8_t kSelfTestOverAux = 1U << 4;

/// Codes of the link rate, in units of 0.27 Gbit/s a lane.
constexpr std::uint8_t kRbr = 0x06;
constexpr std::uint8_t kHbr = 0x0a;
constexpr std::uint8_t kHbr2 = 0x14;

/// The link rates that this family knows, the fastest one first.
constexpr std::array kLinkRates{kHbr2, kHbr, kRbr};

constexpr bool isLinkRate(std::uint32_t rate)
{
    return std::find(kLinkRates.begin(), kLinkRates.end(), rate) != kLinkRates.end();
}

}  // namespace vek::dpcd

#endif
