// The power monitor chips on the card's I2C buses: LTC2990, LTC2991 and INA3221.

#include <cstdint>
#include <cstdio>

#include "tovira_parse/handlers.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

// How the LTC chips acquire: once, and waited for.
constexpr int kSingleAcquisition = 0;
constexpr int kWaitReady = 1;

// The chips' measurements as they are typed, which differ between the two.
enum Ltc2990Mode : std::uint32_t { kLtc2990Currents = 6, kLtc2990Voltages = 7 };
enum Ltc2991Mode : std::uint32_t { kLtc2991Voltages = 0, kLtc2991Currents = 1 };

// What is asked of an LTC chip.
struct LtcRequest {
    Tokens arguments;
    std::int32_t channel;
    std::int32_t addressIndex;
    std::uint32_t mode;
};

// Takes channel, address index and mode. False when one of them is missing.
bool takeRequest(LtcRequest& request)
{
    request.arguments.word();
    std::uint32_t channel = 0;
    std::uint32_t addressIndex = 0;
    if (!request.arguments.number(channel) || !request.arguments.number(addressIndex) ||
        !request.arguments.number(request.mode)) {
        return false;
    }
    request.channel = static_cast<std::int32_t>(channel);
    request.addressIndex = static_cast<std::int32_t>(addressIndex);
    return true;
}

// Takes a sense resistor's value in milliohms, 0 where none is typed.
std::uint32_t takeRsense(Tokens& arguments)
{
    std::uint32_t milliohms = 0;
    arguments.number(milliohms);
    return milliohms;
}

void reportLtcError(const char* chip, const LtcRequest& request, const char* quantity, int error)
{
    printf("%s: %d:%d get %s error (%d)\n", chip, request.channel, request.addressIndex, quantity, error);
}

void showLtc2990Currents(LtcRequest& request)
{
    const std::uint32_t rsense1 = takeRsense(request.arguments);
    const std::uint32_t rsense2 = takeRsense(request.arguments);
    float current1 = 0;
    float current2 = 0;
    const int error = vekLTC2990GetCurrent2(request.channel, request.addressIndex, rsense1, rsense2, &current1,
                                            &current2, kSingleAcquisition, kWaitReady);
    if (error != 0) {
        reportLtcError("LTC2990", request, "current", error);
        return;
    }
    printf("current1=%f\tcurent2=%f\n", double{current1}, double{current2});
}

void showLtc2990Voltages(const LtcRequest& request)
{
    float v1 = 0;
    float v2 = 0;
    float v3 = 0;
    float v4 = 0;
    const int error =
        vekLTC2990GetVolt4(request.channel, request.addressIndex, &v1, &v2, &v3, &v4, kSingleAcquisition, kWaitReady);
    if (error != 0) {
        reportLtcError("LTC2990", request, "voltage", error);
        return;
    }
    printf("v1=%f\tv2=%f\tv3=%f\tv4=%f\n", double{v1}, double{v2}, double{v3}, double{v4});
}

void showLtc2991Currents(LtcRequest& request)
{
    const std::uint32_t rsense1 = takeRsense(request.arguments);
    const std::uint32_t rsense2 = takeRsense(request.arguments);
    const std::uint32_t rsense3 = takeRsense(request.arguments);
    const std::uint32_t rsense4 = takeRsense(request.arguments);
    float v1v2 = 0;
    float v3v4 = 0;
    float v5v6 = 0;
    float v7v8 = 0;
    const int error = vekLTC2991GetCurrent4(request.channel, request.addressIndex, rsense1, rsense2, rsense3, rsense4,
                                            &v1v2, &v3v4, &v5v6, &v7v8, kSingleAcquisition, kWaitReady);
    if (error != 0) {
        reportLtcError("LTC2991", request, "current", error);
        return;
    }
    printf("v1v2_current=%fA\tv3v4_current=%fA\tv5v6_current=%fA\tv7v8_current=%fA\n", double{v1v2}, double{v3v4},
           double{v5v6}, double{v7v8});
}

void showLtc2991Voltages(const LtcRequest& request)
{
    float v1 = 0;
    float v2 = 0;
    float v3 = 0;
    float v4 = 0;
    float v5 = 0;
    float v6 = 0;
    float v7 = 0;
    float v8 = 0;
    const int error = vekLTC2991GetVolt8(request.channel, request.addressIndex, &v1, &v2, &v3, &v4, &v5, &v6, &v7, &v8,
                                         kSingleAcquisition, kWaitReady);
    if (error != 0) {
        reportLtcError("LTC2991", request, "voltage", error);
        return;
    }
    printf("v1=%fV\tv2=%fV\tv3=%fV\tv4=%fV\tv5=%fV\tv6=%fV\tv7=%fV\tv8=%fV\n", double{v1}, double{v2}, double{v3},
           double{v4}, double{v5}, double{v6}, double{v7}, double{v8});
}

void showInaVoltages(std::int32_t channel)
{
    float millivolts1 = 0;
    float millivolts2 = 0;
    const int error = vekINA3221GetVolt2(channel, &millivolts1, &millivolts2);
    if (error != 0) {
        printf("INA3221: %d: get voltage error (%d)\n", channel, error);
        return;
    }
    printf("v1=%.3fmv\tv2=%.3fmv\n", double{millivolts1}, double{millivolts2});
}

void showInaCurrents(std::int32_t channel, std::uint32_t rsense1, std::uint32_t rsense2)
{
    float current1 = 0;
    float current2 = 0;
    const int error = vekINA3221GetCurrent2(channel, rsense1, rsense2, &current1, &current2);
    if (error != 0) {
        printf("INA3221: %d: get current error (%d)\n", channel, error);
        return;
    }
    printf("current1=%.3fA\tcurrent2=%.3fA\n", double{current1}, double{current2});
}

}  // namespace

int doLtc2990(char* cmdText, int /*repeat*/)
{
    LtcRequest request{.arguments = {cmdText}, .channel = 0, .addressIndex = 0, .mode = 0};
    if (!takeRequest(request)) {
        return kStatusBadArgument;
    }
    if (request.mode == kLtc2990Currents) {
        showLtc2990Currents(request);
    } else if (request.mode == kLtc2990Voltages) {
        showLtc2990Voltages(request);
    }
    return kStatusDone;
}

int doLtc2991(char* cmdText, int /*repeat*/)
{
    LtcRequest request{.arguments = {cmdText}, .channel = 0, .addressIndex = 0, .mode = 0};
    if (!takeRequest(request)) {
        return kStatusBadArgument;
    }
    if (request.mode == kLtc2991Currents) {
        showLtc2991Currents(request);
    } else if (request.mode == kLtc2991Voltages) {
        showLtc2991Voltages(request);
    }
    return kStatusDone;
}

int doIna3221(char* cmdText, int /*repeat*/)
{
    Tokens arguments{cmdText};
    arguments.word();
    std::uint32_t typedChannel = 0;
    if (!arguments.number(typedChannel)) {
        return kStatusBadArgument;
    }
    const auto channel = static_cast<std::int32_t>(typedChannel);
    const std::uint32_t rsense1 = takeRsense(arguments);
    const std::uint32_t rsense2 = takeRsense(arguments);
    showInaVoltages(channel);
    showInaCurrents(channel, rsense1, rsense2);
    return kStatusDone;
}
