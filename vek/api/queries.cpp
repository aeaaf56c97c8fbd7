#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "api/driver_core.h"
#include "drivers/card_report.h"
#include "path/driver_path.h"
#include "vek.h"

namespace vek
{
namespace
{

/// Longer than any keyword.
constexpr std::size_t kKeywordLimit = 16;

unsigned countI2cChannels()
{
    unsigned count = 0;
    for (const I2cBus* bus : openPath->i2c) {
        count += bus == nullptr ? 0U : 1U;
    }
    return count;
}

/// Room for a report before it is cut.
using ReportText = std::array<char, std::size_t{2} * VEK_QUERY_REPORT_SIZE>;

/// The report's lines that are complete and, with a NUL behind them, fit into what a caller hands over.
std::string_view completeLines(const ReportText& text)
{
    const std::string_view fitting(text.data(), strnlen(text.data(), VEK_QUERY_REPORT_SIZE - 1));
    return fitting.substr(0, fitting.rfind('\n') + 1);
}

int writeReport(const DriverCore& core, std::string_view keyword, ReportText& text)
{
    std::FILE* out = fmemopen(text.data(), text.size(), "w");
    if (out == nullptr) {
        return VEK_NO_MEMORY;
    }
    const int result = printCardReport(out,
                                       {.pciConfiguration = *openPath->pciConfiguration,
                                        .clocks = *openPath->clocks,
                                        .information = *openPath->information,
                                        .memory = core.memory(),
                                        .displays = openDisplays(),
                                        .i2cChannels = countI2cChannels(),
                                        .cards = static_cast<unsigned>(driverCards())},
                                       keyword);
    std::fclose(out);
    return result;
}

}  // namespace
}  // namespace vek

int vekQueryInt(int item, int* value, int card)
{
    if (vek::openPath == nullptr) {
        return VEK_NO_PATH;
    }
    if (vek::openPath->driver == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    if (item != VEK_QUERY_CARD_COUNT || value == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    if (vek::driverPath(card) == nullptr) {
        return VEK_NO_RESPONSE;
    }
    *value = vek::driverCards();
    return VEK_OK;
}

int vekQueryInfo(const char* keyword, char* report)
{
    const vek::CardHold hold(vek::openCardLock());
    const auto [found, core] = vek::findDriver();
    if (found != VEK_OK) {
        return found;
    }
    if (keyword == nullptr || report == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    vek::ReportText text{};
    const int result = vek::writeReport(*core, {keyword, strnlen(keyword, vek::kKeywordLimit)}, text);
    if (result == VEK_OK) {
        const std::string_view lines = vek::completeLines(text);
        lines.copy(report, lines.size());
        report[lines.size()] = '\0';
    }
    return result;
}
