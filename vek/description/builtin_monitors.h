#ifndef VEK_DESCRIPTION_BUILTIN_MONITORS_H
#define VEK_DESCRIPTION_BUILTIN_MONITORS_H

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "card/dp_sink.h"
#include "card/dp_sinks.h"
#include "card/monitor_edids.h"

namespace vek
{

/// A monitor that a description may name rather than bring an EDID for.
struct BuiltinMonitor {
    std::string_view name;
    std::span<const std::uint8_t> edid;
    const DpSinkFacts* sink;  ///< Null when it is no DisplayPort monitor.
};

inline constexpr std::array<BuiltinMonitor, 7> kBuiltinMonitors{{
    {"Vista 24H", kMonitor1080p, nullptr},
    {"Vista 27U", kMonitor2160p, nullptr},
    {"Desk 19S", kMonitorSxga, nullptr},
    {"Desk 24W", kMonitorWuxga, nullptr},
    {"Vista 27Q", kDpMonitorQhdEdid, &kDpMonitorQhd},
    {"Desk 24P", kDpMonitorWuxgaEdid, &kDpMonitorWuxga},
    {"Panel 15F", kEdpPanelEdid, &kEdpPanel},
}};

}  // namespace vek

#endif
