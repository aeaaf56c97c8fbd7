#include "drivers/sensors.h"

namespace vek
{

/// Whether the chip has a site, by one of the numbers in the info register.
int SensorDriver::checkSite(int site, unsigned infoShift)
{
    const auto [result, info] = registers_.read(sensor_unit::kInfo, sensor_unit::kRegisterWidth);
    if (result != VEK_OK) {
        return result;
    }
    const auto sites = static_cast<int>(info >> infoShift & sensor_unit::kInfoSitesMask);
    const bool exists = site >= 0 && site < sites && site < static_cast<int>(sensor_unit::kMaxSites);
    return exists ? VEK_OK : VEK_BAD_ARGUMENT;
}

int SensorDriver::readCode(std::uint64_t address, std::uint32_t mask, std::uint32_t& code)
{
    const auto [result, value] = registers_.read(address, sensor_unit::kRegisterWidth);
    if (result != VEK_OK) {
        return result;
    }
    // A chip that has gone from the bus reads as all ones.
    if ((value & ~std::uint64_t{mask}) != sensor_unit::kValid) {
        return VEK_BAD_DATA;
    }
    code = static_cast<std::uint32_t>(value & mask);
    return VEK_OK;
}

int SensorDriver::readTemperature(int site, double& celsius)
{
    std::uint32_t code = 0;
    int result = checkSite(site, 0);
    if (result == VEK_OK) {
        result = readCode(sensor_unit::temperatureOf(static_cast<std::size_t>(site)), sensor_unit::kCodeMask, code);
    }
    if (result == VEK_OK) {
        celsius = code / sensor_unit::kCodesPerCelsius + sensor_unit::kCelsiusAtCode0;
    }
    return result;
}

int SensorDriver::readVoltage(int site, double& volts)
{
    std::uint32_t code = 0;
    int result = checkSite(site, 0);
    if (result == VEK_OK) {
        result = readCode(sensor_unit::voltageOf(static_cast<std::size_t>(site)), sensor_unit::kCodeMask, code);
    }
    if (result == VEK_OK) {
        volts = code / sensor_unit::kCodesPerVolt;
    }
    return result;
}

int SensorDriver::readProcess(int kind, int site, int& count)
{
    if (kind < VEK_PROCESS_SVT || kind > VEK_PROCESS_ULVT) {
        return VEK_BAD_ARGUMENT;
    }
    std::uint32_t code = 0;
    int result = checkSite(site, sensor_unit::kInfoSitesBits);
    if (result == VEK_OK) {
        const auto address =
            sensor_unit::processOf(static_cast<std::size_t>(site), static_cast<std::size_t>(kind - VEK_PROCESS_SVT));
        result = readCode(address, sensor_unit::kCountMask, code);
    }
    if (result == VEK_OK) {
        count = static_cast<int>(code);
    }
    return result;
}

}  // namespace vek
