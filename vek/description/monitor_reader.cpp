#include "description/monitor_reader.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "description/builtin_monitors.h"
#include "description/described_files.h"
#include "drivers/dpcd.h"

namespace vek
{
namespace
{

constexpr std::array<std::string_view, kDisplayOutputs> kOutputNames{"HDMI-0", "HDMI-1", "DP-0", "DP-1", "VGA", "DVO"};
constexpr std::array<std::string_view, 4> kAuxManners{"serves", "defers", "silent", "refuses"};
constexpr std::array<std::string_view, 2> kRevisions{"1.1", "1.2"};
constexpr std::array<std::uint8_t, kRevisions.size()> kRevisionCodes{0x11, 0x12};
constexpr std::array<std::string_view, 3> kRates{"1.62", "2.7", "5.4"};
constexpr std::array<std::uint8_t, kRates.size()> kRateCodes{dpcd::kRbr, dpcd::kHbr, dpcd::kHbr2};

constexpr std::array<std::string_view, 12> kSinkKeys{
    "revision",     "max_rate", "max_lanes", "cable_rate", "training_pattern_3", "panel", "swing",
    "pre_emphasis", "oui",      "name",      "aux",        "deferrals"};

/// The longest file name that the host takes, less its NUL.
constexpr std::size_t kMostFileName = 4095;

/// A monitor of which nothing but its EDID is known, on DisplayPort.
constexpr DpSinkFacts kPlainSink{
    .revision = 0x12,
    .maxRate = dpcd::kHbr2,
    .maxLanes = 4,
    .trainingPattern3 = true,
    .cableRate = dpcd::kHbr2,
};

constexpr bool isDisplayPort(DisplayOutput output)
{
    return output == DisplayOutput::kDp0 || output == DisplayOutput::kDp1;
}

/// Whether a chip has an output, as drivers/output_routing.h numbers them.
bool chipHas(const ChipFacts& chip, DisplayOutput output)
{
    switch (output) {
        case DisplayOutput::kHdmi0:
            return chip.hdmiOutputs > 0;
        case DisplayOutput::kHdmi1:
            return chip.hdmiOutputs > 1;
        case DisplayOutput::kDp0:
            return chip.dpOutputs > 0;
        case DisplayOutput::kDp1:
            return chip.dpOutputs > 1;
        case DisplayOutput::kVga:
            return chip.vgaDdc != kNoDdc;
        case DisplayOutput::kDvo:
            return chip.dvoDdc != kNoDdc;
    }
    return false;
}

/// The DDC channel of an output that the chip has and that is not a DisplayPort one.
std::size_t ddcOf(const ChipFacts& chip, DisplayOutput output)
{
    switch (output) {
        case DisplayOutput::kVga:
            return static_cast<std::size_t>(chip.vgaDdc);
        case DisplayOutput::kDvo:
            return static_cast<std::size_t>(chip.dvoDdc);
        default:
            return static_cast<std::size_t>(output);
    }
}

void warnAboutEdid(const TableReader& monitor, std::span<const std::uint8_t> edid)
{
    constexpr std::array<std::uint8_t, 8> kHeader{0x00, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x00};
    constexpr std::size_t kExtensions = 126;
    if (!std::equal(kHeader.begin(), kHeader.end(), edid.begin())) {
        monitor.warning("edid", "does not begin with the header of an EDID");
    }
    for (std::size_t block = 0; block * kEdidBlockSize < edid.size(); ++block) {
        const auto bytes = edid.subspan(block * kEdidBlockSize, kEdidBlockSize);
        if ((std::accumulate(bytes.begin(), bytes.end(), 0U) & 0xff) != 0) {
            monitor.warning("edid", "the checksum of block " + std::to_string(block) + " is wrong");
        }
    }
    if (edid[kExtensions] + std::size_t{1} != edid.size() / kEdidBlockSize) {
        monitor.warning("edid", "has " + std::to_string(edid.size() / kEdidBlockSize) +
                                    " blocks, but says that it has " + std::to_string(edid[kExtensions] + 1U));
    }
}

/// Reads the EDID file that `edid` names; nothing when it is not usable.
std::span<const std::uint8_t> readEdidFile(const TableReader& monitor, std::string_view description,
                                           const std::string& name, std::span<std::uint8_t, kMostEdidBytes> room)
{
    const auto [error, size] = readFile(nameBeside(description, name), room);
    if (error != 0) {
        monitor.unreadable("edid", reasonFor(error));
        return {};
    }
    if (size == 0 || size > room.size() || size % kEdidBlockSize != 0) {
        monitor.mistake("edid", "the file has to have 128, 256, 384 or 512 bytes, not " +
                                    (size > room.size() ? "more" : std::to_string(size)));
        return {};
    }
    warnAboutEdid(monitor, room.first(size));
    return room.first(size);
}

/// What is known of a monitor's make.
struct Make {
    std::span<const std::uint8_t> edid;
    const DpSinkFacts* sink;
};

Make readMake(TableReader& monitor, std::string_view description, std::span<std::uint8_t, kMostEdidBytes> room)
{
    std::array<std::string_view, kBuiltinMonitors.size()> names;
    std::transform(kBuiltinMonitors.begin(), kBuiltinMonitors.end(), names.begin(),
                   [](const BuiltinMonitor& builtin) { return builtin.name; });
    const std::optional<std::size_t> model = monitor.choice("model", names);
    const std::optional<std::string> file = monitor.text("edid", kMostFileName);
    if (monitor.has("model") == monitor.has("edid")) {
        monitor.mistake(monitor.has("edid") ? "edid" : "", "a monitor has either an edid, a file, or a model");
        return {};
    }
    if (model) {
        const BuiltinMonitor& builtin = kBuiltinMonitors[*model];
        std::copy(builtin.edid.begin(), builtin.edid.end(), room.begin());
        return {room.first(builtin.edid.size()), builtin.sink};
    }
    return {file ? readEdidFile(monitor, description, *file, room) : std::span<const std::uint8_t>{}, nullptr};
}

void readOui(TableReader& monitor, DpSinkFacts& sink)
{
    const std::optional<std::int64_t> oui = monitor.integer("oui", {0, 0xff'ffff});
    if (oui) {
        sink.oui = {static_cast<std::uint8_t>(*oui >> 16), static_cast<std::uint8_t>(*oui >> 8),
                    static_cast<std::uint8_t>(*oui)};
    }
}

/// How the sink behaves on its AUX channel.
void readAux(TableReader& monitor, DpSinkFacts& sink)
{
    constexpr std::int64_t kMostDeferrals = 255;
    const std::optional<std::size_t> manner = monitor.choice("aux", kAuxManners);
    if (manner) {
        sink.manner = static_cast<AuxManner>(*manner);
    }
    sink.deferrals = static_cast<std::uint8_t>(monitor.integer("deferrals", {0, kMostDeferrals}).value_or(0));
}

void readRates(TableReader& monitor, DpSinkFacts& sink)
{
    const std::optional<std::size_t> maxRate = monitor.choice("max_rate", kRates);
    if (maxRate) {
        sink.maxRate = kRateCodes[*maxRate];
        sink.cableRate = sink.maxRate;
    }
    const std::optional<std::size_t> cableRate = monitor.choice("cable_rate", kRates);
    if (cableRate) {
        sink.cableRate = kRateCodes[*cableRate];
    }
    const std::int64_t lanes = monitor.integer("max_lanes", {1, dpcd::kMaxLanes}).value_or(sink.maxLanes);
    if (lanes == 3) {
        monitor.mistake("max_lanes", "has to be 1, 2 or 4, not 3");
    }
    sink.maxLanes = static_cast<std::uint8_t>(lanes);
    sink.trainingPattern3 = monitor.boolean("training_pattern_3").value_or(sink.trainingPattern3);
}

DpSinkFacts readSink(TableReader& monitor, DisplayOutput output, const Make& make)
{
    constexpr std::int64_t kMostLevel = 3;
    DpSinkFacts sink = make.sink == nullptr ? kPlainSink : *make.sink;
    const std::optional<std::size_t> revision = monitor.choice("revision", kRevisions);
    sink.revision = revision ? kRevisionCodes[*revision] : sink.revision;
    readRates(monitor, sink);
    sink.panel = monitor.boolean("panel").value_or(make.sink == nullptr ? output == DisplayOutput::kDp1 : sink.panel);
    sink.swing = static_cast<std::uint8_t>(monitor.integer("swing", {0, kMostLevel}).value_or(sink.swing));
    sink.preEmphasis =
        static_cast<std::uint8_t>(monitor.integer("pre_emphasis", {0, kMostLevel}).value_or(sink.preEmphasis));
    if (sink.swing + sink.preEmphasis > kMostLevel) {
        const bool swingNamed = monitor.has("swing");
        monitor.mistake(swingNamed ? "swing" : "pre_emphasis",
                        swingNamed ? "has to be 3 at most together with pre_emphasis"
                                   : "has to be 3 at most together with the swing of the model");
    }
    readOui(monitor, sink);
    const std::optional<std::string> name = monitor.text("name", dpcd::kDeviceNameSize);
    if (name) {
        sink.name.fill(0);
        std::copy(name->begin(), name->end(), sink.name.begin());
    }
    readAux(monitor, sink);
    return sink;
}

void refuseSinkKeys(TableReader& monitor)
{
    for (const std::string_view key : kSinkKeys) {
        if (monitor.has(key)) {
            monitor.accept(key);
            monitor.mistake(key, "is for DP-0 and DP-1 only");
        }
    }
}

void attach(TableReader& monitor, DisplayOutput output, const Make& make, DescribedCard& into)
{
    const bool answers = monitor.boolean("edid_answers").value_or(true);
    const std::span<const std::uint8_t> edid = answers ? make.edid : std::span<const std::uint8_t>{};
    if (isDisplayPort(output)) {
        DpSinkFacts& sink = into.facts.sinks[output == DisplayOutput::kDp1 ? 1 : 0];
        sink = readSink(monitor, output, make);
        sink.edid = edid;
    } else {
        into.facts.monitors[ddcOf(into.facts.chip, output)] = {.attached = true, .edid = edid};
        refuseSinkKeys(monitor);
    }
    const std::optional<std::int64_t> controller = monitor.integer("controller", {0, into.facts.chip.controllers - 1});
    if (controller) {
        into.facts.routing = output_routing::with(into.facts.routing, output, static_cast<std::uint32_t>(*controller));
    }
}

}  // namespace

void readMonitors(TableReader& card, std::string_view description, DescribedCard& into)
{
    std::array<unsigned, kDisplayOutputs> lines{};
    for (TableReader& monitor : card.tables("monitor", kDisplayOutputs)) {
        const std::optional<std::size_t> number = monitor.choice("output", kOutputNames);
        monitor.require("output");
        if (!number) {
            continue;
        }
        const auto output = static_cast<DisplayOutput>(*number);
        if (!chipHas(into.facts.chip, output)) {
            monitor.mistake("output", "the chip has no " + std::string(kOutputNames[*number]));
            continue;
        }
        if (lines[*number] != 0) {
            monitor.mistake("output", std::string(kOutputNames[*number]) + " has a monitor already, in line " +
                                          std::to_string(lines[*number]));
            continue;
        }
        lines[*number] = monitor.line();
        const Make make = readMake(monitor, description, into.edids[*number]);
        attach(monitor, output, make, into);
        monitor.finish();
    }
}

}  // namespace vek
