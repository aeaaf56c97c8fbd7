#ifndef VEK_DRIVERS_AXI_DATA_H
#define VEK_DRIVERS_AXI_DATA_H

#include <array>
#include <cstddef>
#include <ctime>
#include <string_view>

#include "drivers/axi_monitor.h"

namespace vek
{

/// The first line of a data file: comma-separated values (RFC 4180, with plain line ends).
constexpr std::string_view kAxiDataHeader = "time,master,reads,writes,bytes,latency\n";

/// Room for the lines of one sample, each at most as long as four numbers of 20 digits, a time and a name need.
using AxiDataText = std::array<char, axi_monitor::kMaxMasters * 160>;

/// Writes the lines of a sample, one a master: the time as ISO 8601 in UTC with milliseconds, the master, how many
/// reads and writes, bytes moved, and how many AXI clock cycles a transaction took on average, with one decimal.
/// Returns the lines, which lie in `text`.
std::string_view formatAxiSample(const AxiSample& sample, const timespec& when, AxiDataText& text);

}  // namespace vek

#endif
