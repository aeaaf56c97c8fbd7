#ifndef VEK_DRIVERS_SENSORS_H
#define VEK_DRIVERS_SENSORS_H

#include <cstddef>
#include <cstdint>

#include "address_space.h"
#include "vek.h"

namespace vek
{

/// The sensor unit: 64 read-only registers of 32 bits. Only longs at multiples of 4 are answered; registers that are
/// not listed read 0.
///
///     0x000                          info         bits 3:0 sites with a temperature and a voltage sensor, 7:4 sites
///                                                 with process monitors
///     0x010 + 4 * site               temperature  bits 11:0 a code: degrees Celsius are code / 16 - 60
///     0x020 + 4 * site               voltage      bits 11:0 a code: volts are code / 2000
///     0x040 + 16 * site + 4 * kind   process      bits 15:0 the count of a ring oscillator, kind 0 SVT, 1 LVT, 2 ULVT
///
/// Bit 31 of a reading tells that it is valid, all other bits are 0. The sensors convert all the time.
namespace sensor_unit
{

constexpr std::uint64_t kWindowBase = 0x30'a000;  ///< Where it lies in the register region.
constexpr std::uint64_t kWindowSize = 0x100;
constexpr unsigned kRegisterWidth = 4;

constexpr std::uint64_t kInfo = 0x000;
constexpr std::uint64_t kTemperatures = 0x010;
constexpr std::uint64_t kVoltages = 0x020;
constexpr std::uint64_t kProcesses = 0x040;

constexpr std::size_t kMaxSites = 2;
constexpr std::size_t kProcessKinds = 3;
constexpr unsigned kInfoSitesBits = 4;
constexpr std::uint32_t kInfoSitesMask = 0xf;

constexpr std::uint32_t kValid = 1U << 31;
constexpr std::uint32_t kCodeMask = 0xfff;
constexpr std::uint32_t kCountMask = 0xffff;

constexpr double kCodesPerCelsius = 16;
constexpr double kCelsiusAtCode0 = -60;
constexpr double kCodesPerVolt = 2000;

constexpr std::uint64_t temperatureOf(std::size_t site)
{
    return kTemperatures + kRegisterWidth * site;
}

constexpr std::uint64_t voltageOf(std::size_t site)
{
    return kVoltages + kRegisterWidth * site;
}

constexpr std::uint64_t processOf(std::size_t site, std::size_t kind)
{
    constexpr std::uint64_t kSiteStep = 16;
    return kProcesses + kSiteStep * site + kRegisterWidth * kind;
}

}  // namespace sensor_unit

/// Reads the sensor unit. Results are those of enum VekResult: VEK_BAD_ARGUMENT for a site or a kind that the chip does
/// not have, VEK_BAD_DATA for a reading that is not valid. Outputs are touched on success only.
class SensorDriver
{
public:
    explicit SensorDriver(AddressSpace& registers) : registers_(registers) {}

    /// Reads a temperature in degrees Celsius.
    int readTemperature(int site, double& celsius);

    /// Reads a voltage in volts.
    int readVoltage(int site, double& volts);

    /// Reads the count of a process monitor, `kind` of enum VekProcessMonitor.
    int readProcess(int kind, int site, int& count);

private:
    int checkSite(int site, unsigned infoShift);
    int readCode(std::uint64_t address, std::uint32_t mask, std::uint32_t& code);

    AddressSpace& registers_;
};

}  // namespace vek

#endif
