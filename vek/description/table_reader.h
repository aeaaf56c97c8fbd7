#ifndef VEK_DESCRIPTION_TABLE_READER_H
#define VEK_DESCRIPTION_TABLE_READER_H

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "description/mistakes.h"
#include "description/toml.h"

namespace vek
{

/// The numbers that a key may have.
struct Range {
    std::int64_t least;
    std::int64_t most;
};

/// A table of a description. Each key is asked for once, by its name and what it has to be; a value that is something
/// else is a mistake and counts as missing. What was not asked for is a mistake at the end.
class TableReader
{
public:
    /// `path` names the table in mistakes. The table and the mistakes have to live as long as the reader.
    TableReader(const toml::table& table, std::string path, Mistakes& mistakes)
        : table_(table), path_(std::move(path)), mistakes_(mistakes)
    {
    }

    std::optional<std::int64_t> integer(std::string_view key, Range range);

    /// A decimal number times `scale`, rounded; its range is of the number itself.
    std::optional<std::int32_t> scaled(std::string_view key, Range range, std::int32_t scale);

    std::optional<bool> boolean(std::string_view key);

    /// A text of printable ASCII characters, not empty.
    std::optional<std::string> text(std::string_view key, std::size_t mostCharacters);

    /// One of several texts, by its index.
    std::optional<std::size_t> choice(std::string_view key, std::span<const std::string_view> choices);

    /// Numbers in an array, a bit for each.
    std::uint8_t bits(std::string_view key, Range range);

    /// A table inside this one; without one, nothing.
    std::optional<TableReader> table(std::string_view key);

    /// The tables of an array, up to `most`; without one, none.
    std::vector<TableReader> tables(std::string_view key, std::size_t most);

    /// Adds a mistake about a key, in its line; in the table's when the key is missing.
    void mistake(std::string_view key, std::string_view what) const;
    void unreadable(std::string_view key, std::string_view what) const;
    void warning(std::string_view key, std::string_view what) const;

    /// Adds a mistake when the key is missing.
    void require(std::string_view key) const;

    /// The line that the table begins in.
    unsigned line() const { return table_.source().begin.line; }

    bool has(std::string_view key) const { return table_.contains(key); }

    /// Takes a key as asked for.
    void accept(std::string_view key) { known_.emplace_back(key); }

    /// Adds a mistake about every key that was not asked for.
    void finish() const;

private:
    const toml::node* find(std::string_view key);
    void wrongType(std::string_view key, const toml::node& node, std::string_view wanted) const;
    std::string pathOf(std::string_view key) const;
    unsigned lineOf(std::string_view key) const;

    const toml::table& table_;
    std::string path_;
    Mistakes& mistakes_;
    std::vector<std::string> known_;
};

/// "0x1f" or "31", as people write such a number.
std::string inHex(std::int64_t number);

}  // namespace vek

#endif
