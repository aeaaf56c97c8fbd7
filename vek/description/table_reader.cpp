#include "description/table_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace vek
{
namespace
{

std::string_view typeName(const toml::node& node)
{
    switch (node.type()) {
        case toml::node_type::table:
            return "a table";
        case toml::node_type::array:
            return "an array";
        case toml::node_type::string:
            return "a text";
        case toml::node_type::integer:
            return "an integer";
        case toml::node_type::floating_point:
            return "a decimal number";
        case toml::node_type::boolean:
            return "a boolean";
        default:
            return "a date or time";
    }
}

std::string shown(double number)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g", number);
    return text.data();
}

/// Large ranges are those of addresses.
std::string shownIn(Range range, std::int64_t number)
{
    constexpr std::int64_t kDecimalUpTo = 99'999;
    return range.most > kDecimalUpTo && number >= 0 ? inHex(number) : std::to_string(number);
}

std::string rangeText(Range range)
{
    return "from " + shownIn(range, range.least) + " to " + shownIn(range, range.most);
}

bool isPrintable(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char character) { return character >= ' ' && character <= '~'; });
}

}  // namespace

std::string inHex(std::int64_t number)
{
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "0x%llx", static_cast<unsigned long long>(number));
    return text.data();
}

std::string TableReader::pathOf(std::string_view key) const
{
    std::string path = path_;
    if (!path.empty() && !key.empty()) {
        path += '.';
    }
    return path.append(key);
}

unsigned TableReader::lineOf(std::string_view key) const
{
    const toml::node* const node = table_.get(key);
    return node == nullptr ? line() : node->source().begin.line;
}

void TableReader::mistake(std::string_view key, std::string_view what) const
{
    mistakes_.add(lineOf(key), pathOf(key), what);
}

void TableReader::unreadable(std::string_view key, std::string_view what) const
{
    mistakes_.addUnreadable(lineOf(key), pathOf(key), what);
}

void TableReader::warning(std::string_view key, std::string_view what) const
{
    mistakes_.warn(lineOf(key), pathOf(key), what);
}

void TableReader::require(std::string_view key) const
{
    if (!has(key)) {
        mistake(key, "is missing");
    }
}

void TableReader::wrongType(std::string_view key, const toml::node& node, std::string_view wanted) const
{
    mistake(key, std::string("has to be ").append(wanted).append(", not ").append(typeName(node)));
}

const toml::node* TableReader::find(std::string_view key)
{
    known_.emplace_back(key);
    return table_.get(key);
}

std::optional<std::int64_t> TableReader::integer(std::string_view key, Range range)
{
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    const auto* const value = node->as_integer();
    if (value == nullptr) {
        wrongType(key, *node, "an integer");
        return std::nullopt;
    }
    const std::int64_t number = value->get();
    if (number < range.least || number > range.most) {
        mistake(key, "has to be " + rangeText(range) + ", not " + shownIn(range, number));
        return std::nullopt;
    }
    return number;
}

std::optional<std::int32_t> TableReader::scaled(std::string_view key, Range range, std::int32_t scale)
{
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    if (!node->is_number()) {
        wrongType(key, *node, "a number");
        return std::nullopt;
    }
    const double number = node->value<double>().value_or(std::nan(""));
    // Not a number is in no range.
    if (!(number >= static_cast<double>(range.least) && number <= static_cast<double>(range.most))) {
        mistake(key, "has to be " + rangeText(range) + ", not " + shown(number));
        return std::nullopt;
    }
    return static_cast<std::int32_t>(std::lround(number * scale));
}

std::optional<bool> TableReader::boolean(std::string_view key)
{
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    const auto* const value = node->as_boolean();
    if (value == nullptr) {
        wrongType(key, *node, "true or false");
        return std::nullopt;
    }
    return value->get();
}

std::optional<std::string> TableReader::text(std::string_view key, std::size_t mostCharacters)
{
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    const auto* const value = node->as_string();
    if (value == nullptr) {
        wrongType(key, *node, "a text in quotes");
        return std::nullopt;
    }
    const std::string& characters = value->get();
    if (characters.empty() || characters.size() > mostCharacters || !isPrintable(characters)) {
        mistake(key, "has to be 1 to " + std::to_string(mostCharacters) + " printable ASCII characters");
        return std::nullopt;
    }
    return characters;
}

std::optional<std::size_t> TableReader::choice(std::string_view key, std::span<const std::string_view> choices)
{
    std::string list;
    for (std::size_t index = 0; index < choices.size(); ++index) {
        if (index != 0) {
            list += index + 1 == choices.size() ? " or " : ", ";
        }
        list.append("\"").append(choices[index]).append("\"");
    }
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    const auto* const value = node->as_string();
    if (value == nullptr) {
        wrongType(key, *node, list);
        return std::nullopt;
    }
    const auto found = std::find(choices.begin(), choices.end(), value->get());
    if (found == choices.end()) {
        constexpr std::size_t kMostShown = 40;
        mistake(key, "has to be " + list + ", not \"" + value->get().substr(0, kMostShown) + "\"");
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - choices.begin());
}

std::uint8_t TableReader::bits(std::string_view key, Range range)
{
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return 0;
    }
    const toml::array* const values = node->as_array();
    if (values == nullptr) {
        wrongType(key, *node, "an array of integers");
        return 0;
    }
    std::uint8_t found = 0;
    for (const toml::node& value : *values) {
        const std::optional<std::int64_t> number = value.value_exact<std::int64_t>();
        if (!number || *number < range.least || *number > range.most) {
            mistake(key, "has to have integers " + rangeText(range) + " in it only");
            return 0;
        }
        found = static_cast<std::uint8_t>(found | 1U << *number);
    }
    return found;
}

std::optional<TableReader> TableReader::table(std::string_view key)
{
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    const toml::table* const inner = node->as_table();
    if (inner == nullptr) {
        wrongType(key, *node, "a table, [" + pathOf(key) + "]");
        return std::nullopt;
    }
    return TableReader(*inner, pathOf(key), mistakes_);
}

std::vector<TableReader> TableReader::tables(std::string_view key, std::size_t most)
{
    std::vector<TableReader> readers;
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return readers;
    }
    const toml::array* const inner = node->as_array();
    if (inner == nullptr) {
        wrongType(key, *node, "an array of tables, [[" + pathOf(key) + "]]");
        return readers;
    }
    for (const toml::node& element : *inner) {
        const toml::table* const one = element.as_table();
        if (one == nullptr) {
            mistakes_.add(element.source().begin.line, pathOf(key), "has to have tables in it only");
            return readers;
        }
        if (readers.size() == most) {
            mistakes_.add(element.source().begin.line, pathOf(key),
                          "there may be " + std::to_string(most) + " at most");
            return readers;
        }
        readers.emplace_back(*one, pathOf(key), mistakes_);
    }
    return readers;
}

void TableReader::finish() const
{
    for (const auto& [key, node] : table_) {
        const std::string_view name = key.str();
        if (std::find(known_.begin(), known_.end(), name) != known_.end()) {
            continue;
        }
        std::string what = "is no key here; there may be ";
        for (std::size_t index = 0; index < known_.size(); ++index) {
            what.append(index == 0 ? "" : ", ").append(known_[index]);
        }
        constexpr std::size_t kMostShown = 40;
        mistakes_.add(node.source().begin.line, pathOf(name.substr(0, kMostShown)), what);
    }
}

}  // namespace vek
