#include "script/script_line.h"

#include <algorithm>
#include <array>

namespace vek
{
namespace
{

struct ScriptWord {
    std::string_view name;
    ScriptAction action;
    unsigned width;
};

constexpr std::array<ScriptWord, 17> kWords{{
    {"rrb", ScriptAction::kRead, 1},
    {"rrw", ScriptAction::kRead, 2},
    {"rrl", ScriptAction::kRead, 4},
    {"rrq", ScriptAction::kRead, 8},
    {"rwb", ScriptAction::kWrite, 1},
    {"rww", ScriptAction::kWrite, 2},
    {"rwl", ScriptAction::kWrite, 4},
    {"rwq", ScriptAction::kWrite, 8},
    {"ckb", ScriptAction::kCheck, 1},
    {"ckw", ScriptAction::kCheck, 2},
    {"ckl", ScriptAction::kCheck, 4},
    {"ckq", ScriptAction::kCheck, 8},
    {"wub", ScriptAction::kWaitUntil, 1},
    {"wuw", ScriptAction::kWaitUntil, 2},
    {"wul", ScriptAction::kWaitUntil, 4},
    {"wuq", ScriptAction::kWaitUntil, 8},
    {"wait", ScriptAction::kWait, 0},
}};

constexpr std::string_view kBlanks = " \t,";

constexpr char lowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lowerCase(a) == lowerCase(b); });
}

/// Cuts the next token off the front of `rest`; empty when there is none.
std::string_view nextToken(std::string_view& rest)
{
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
    const std::string_view token = rest.substr(0, rest.find_first_of(kBlanks));
    rest.remove_prefix(token.size());
    return token;
}

/// The value of a hexadecimal digit, -1 for any other character.
constexpr int digitValue(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = lowerCase(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Parses a whole token as a hexadecimal number of up to 64 bits, with or without "0x".
bool parseNumber(std::string_view token, std::uint64_t& number)
{
    if (token.size() > 2 && token[0] == '0' && lowerCase(token[1]) == 'x') {
        token.remove_prefix(2);
    }
    if (token.empty()) {
        return false;
    }
    number = 0;
    for (const char c : token) {
        const int digit = digitValue(c);
        if (digit < 0 || number >> 60 != 0) {
            return false;
        }
        number = number << 4 | static_cast<std::uint64_t>(digit);
    }
    return true;
}

/// The largest value of an item of `width` bytes.
constexpr std::uint64_t largest(unsigned width)
{
    return ~std::uint64_t{0} >> (8 * (sizeof(std::uint64_t) - width));
}

const char* parseAddress(std::string_view& rest, ScriptStep& step)
{
    return parseNumber(nextToken(rest), step.address) ? nullptr : "the address must be a hexadecimal number";
}

const char* parseValue(std::string_view& rest, ScriptStep& step)
{
    if (!parseNumber(nextToken(rest), step.value)) {
        return "the value must be a hexadecimal number";
    }
    return step.value > largest(step.width) ? "the value is wider than the register item" : nullptr;
}

const char* parseMask(std::string_view& rest, ScriptStep& step)
{
    if (!parseNumber(nextToken(rest), step.mask)) {
        return "the mask must be a hexadecimal number";
    }
    if (step.mask > largest(step.width)) {
        return "the mask is wider than the register item";
    }
    return (step.value & ~step.mask) != 0 ? "the value has bits outside the mask" : nullptr;
}

const char* parseTime(std::string_view& rest, ScriptStep& step)
{
    if (!parseNumber(nextToken(rest), step.milliseconds)) {
        return "the time must be a hexadecimal number of milliseconds";
    }
    return step.milliseconds > kMaxScriptWait ? "the time is longer than 2710 milliseconds (hexadecimal)" : nullptr;
}

bool hasMore(std::string_view rest)
{
    return rest.find_first_not_of(kBlanks) != std::string_view::npos;
}

/// Reads the arguments that the step's action takes, in their order.
const char* parseArguments(std::string_view& rest, ScriptStep& step)
{
    if (step.action == ScriptAction::kWait) {
        return parseTime(rest, step);
    }
    const char* fault = parseAddress(rest, step);
    if (fault != nullptr || step.action == ScriptAction::kRead) {
        return fault;
    }
    fault = parseValue(rest, step);
    if (fault != nullptr || step.action == ScriptAction::kWrite) {
        return fault;
    }
    step.mask = largest(step.width);
    if (step.action == ScriptAction::kWaitUntil || hasMore(rest)) {
        fault = parseMask(rest, step);
    }
    if (fault != nullptr || step.action == ScriptAction::kCheck) {
        return fault;
    }
    return parseTime(rest, step);
}

}  // namespace

const char* parseScriptLine(std::string_view line, ScriptStep& step)
{
    if (line.size() > kMaxScriptLine) {
        return "the line is longer than 255 characters";
    }
    if (line.find('\0') != std::string_view::npos) {
        return "the line holds a NUL byte";
    }
    step = {};
    std::string_view rest = line.substr(0, line.find('#'));
    const std::string_view name = nextToken(rest);
    if (name.empty()) {
        return nullptr;
    }
    const auto* const word = std::find_if(kWords.begin(), kWords.end(), [name](const ScriptWord& candidate) {
        return equalIgnoringCase(candidate.name, name);
    });
    if (word == kWords.end()) {
        return "unknown command";
    }
    step.action = word->action;
    step.width = word->width;
    const char* fault = parseArguments(rest, step);
    if (fault == nullptr && hasMore(rest)) {
        fault = "too many arguments";
    }
    return fault;
}

}  // namespace vek
