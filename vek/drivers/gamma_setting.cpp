#include "drivers/gamma_setting.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vek
{
namespace
{

/// A decimal number, cut after the last of kPlaces decimal places.
struct Decimal {
    std::uint64_t units;  ///< Of 10 to the power of -kPlaces.
    bool more;            ///< Something other than 0 was cut off.
};

constexpr unsigned kPlaces = 9;
constexpr std::uint64_t kUnitsPerOne = 1'000'000'000;

/// Where whole numbers end that keep within 64 bits in units; all beyond count as this.
constexpr std::uint64_t kLargestWhole = 1'000'000'000;

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

/// Takes the digits at the beginning of a text off it.
std::string_view takeDigits(std::string_view& text)
{
    const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
    const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    return digits;
}

std::uint64_t wholeOf(std::string_view digits)
{
    std::uint64_t value = 0;
    for (const char digit : digits) {
        value = std::min(value * 10 + static_cast<std::uint64_t>(digit - '0'), kLargestWhole);
    }
    return value;
}

/// The digits behind the point in units, as far as there are places.
std::uint64_t fractionOf(std::string_view digits)
{
    std::uint64_t units = 0;
    for (std::size_t place = 0; place < kPlaces; ++place) {
        units = units * 10 + (place < digits.size() ? static_cast<std::uint64_t>(digits[place] - '0') : 0);
    }
    return units;
}

bool parseDecimal(std::string_view text, Decimal& number)
{
    const std::string_view whole = takeDigits(text);
    if (whole.empty()) {
        return false;
    }
    std::string_view fraction;
    if (!text.empty() && text.front() == '.') {
        text.remove_prefix(1);
        fraction = takeDigits(text);
        if (fraction.empty()) {
            return false;
        }
    }
    if (!text.empty()) {
        return false;
    }
    const std::string_view rest = fraction.substr(std::min<std::size_t>(fraction.size(), kPlaces));
    number.units = wholeOf(whole) * kUnitsPerOne + fractionOf(fraction);
    number.more = rest.find_first_not_of('0') != std::string_view::npos;
    return true;
}

/// A range of whole numbers, both ends included.
struct Range {
    std::uint64_t lowest;
    std::uint64_t highest;
};

constexpr Range kFractions{0, 1};
constexpr Range kTemperatures{static_cast<std::uint64_t>(kMinKelvin), static_cast<std::uint64_t>(kMaxKelvin)};

bool parseInRange(std::string_view text, const Range& range, double& value)
{
    Decimal number{};
    if (!parseDecimal(text, number) || number.units < range.lowest * kUnitsPerOne) {
        return false;
    }
    const std::uint64_t highest = range.highest * kUnitsPerOne;
    if (number.units > highest || (number.units == highest && number.more)) {
        return false;
    }
    value = static_cast<double>(number.units) / static_cast<double>(kUnitsPerOne);
    return true;
}

/// Takes the next word off a text; empty when there is none.
std::string_view takeWord(std::string_view& text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(word.size());
    return word;
}

/// Compares a word with a keyword in small letters; std::tolower() would ask the locale.
bool isKeyword(std::string_view word, std::string_view keyword)
{
    return std::equal(word.begin(), word.end(), keyword.begin(), keyword.end(), [](char character, char small) {
        return character == small || (character >= 'A' && character <= 'Z' && character - 'A' + 'a' == small);
    });
}

bool parseController(std::string_view word, unsigned controllers, unsigned& controller)
{
    std::string_view rest = word;
    const std::uint64_t number = wholeOf(takeDigits(rest));
    if (word.empty() || !rest.empty() || number >= controllers) {
        return false;
    }
    controller = static_cast<unsigned>(number);
    return true;
}

/// Parses "R:G:B".
bool parseTriple(std::string_view word, std::array<double, 3>& values)
{
    for (std::size_t index = 0; index < values.size(); ++index) {
        const std::size_t end = index + 1 < values.size() ? word.find(':') : word.size();
        if (end == std::string_view::npos || !parseInRange(word.substr(0, end), kFractions, values[index])) {
            return false;
        }
        word.remove_prefix(std::min(end + 1, word.size()));
    }
    return true;
}

/// Parses the value of a keyword. Returns what is wrong, or null.
const char* parseItem(std::string_view keyword, std::string_view value, GammaSetting& setting)
{
    if (isKeyword(keyword, "ga")) {
        return parseTriple(value, setting.gamma) ? nullptr
                                                 : "ga needs three numbers from 0.0 to 1.0, as in ga 1.0:0.9:0.8";
    }
    if (isKeyword(keyword, "br")) {
        return parseInRange(value, kFractions, setting.brightness) ? nullptr : "br needs a number from 0.0 to 1.0";
    }
    if (isKeyword(keyword, "ct")) {
        return parseInRange(value, kTemperatures, setting.kelvin) ? nullptr : "ct needs a number from 1000 to 25100";
    }
    return "expected ga, br or ct";
}

}  // namespace

const char* parseGammaSetting(std::string_view text, unsigned controllers, GammaSetting& setting)
{
    GammaSetting parsed;
    const std::string_view id = takeWord(text);
    if (id.empty() || !std::all_of(id.begin(), id.end(), isDigit)) {
        return "expected the number of a display controller";
    }
    if (!parseController(id, controllers, parsed.controller)) {
        return "the card has no such display controller";
    }
    for (std::string_view keyword = takeWord(text); !keyword.empty(); keyword = takeWord(text)) {
        const char* fault = parseItem(keyword, takeWord(text), parsed);
        if (fault != nullptr) {
            return fault;
        }
    }
    setting = parsed;
    return nullptr;
}

}  // namespace vek
