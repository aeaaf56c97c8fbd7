#ifndef VEK_SCRIPT_SCRIPT_LINE_H
#define VEK_SCRIPT_SCRIPT_LINE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vek
{

/// What a script line does; docs/script-format.md describes the words.
enum class ScriptAction {
    kNone,       ///< blank line or comment
    kRead,       ///< read and print
    kWrite,      ///< write
    kCheck,      ///< read once and compare
    kWaitUntil,  ///< read until the comparison holds
    kWait,       ///< let time pass
};

/// One line of a script, taken apart.
struct ScriptStep {
    ScriptAction action = ScriptAction::kNone;
    unsigned width = 0;              ///< Bytes of the register item.
    std::uint64_t address = 0;       ///< Offset in the register region.
    std::uint64_t value = 0;         ///< Written, or expected under the mask.
    std::uint64_t mask = 0;          ///< Bits that are compared.
    std::uint64_t milliseconds = 0;  ///< To wait, or to wait at most.
};

/// The longest line, in characters without its end, and the longest time to wait in one line, in milliseconds.
constexpr std::size_t kMaxScriptLine = 255;
constexpr std::uint64_t kMaxScriptWait = 10000;

/// Takes a line (without its line end) apart. Returns null and sets `step`, or returns what is wrong with the line.
const char* parseScriptLine(std::string_view line, ScriptStep& step);

}  // namespace vek

#endif
