#include "markdown_page.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "roff.h"

namespace
{

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kLiteralIndent = "    ";
constexpr std::string_view kFence = "```";

// A table's cell that is longer is set as a paragraph of its own column width.
constexpr std::size_t kWideCell = 24;

std::vector<std::string_view> splitLines(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t length = text.find('\n');
        lines.push_back(text.substr(0, length));
        text.remove_prefix(length == std::string_view::npos ? text.size() : length + 1);
    }
    return lines;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::vector<std::string_view> tableCells(std::string_view row)
{
    row = trimmed(row);
    row.remove_prefix(1);
    std::vector<std::string_view> cells;
    while (!row.empty()) {
        const std::size_t length = row.find('|');
        cells.push_back(trimmed(row.substr(0, length)));
        row.remove_prefix(length == std::string_view::npos ? row.size() : length + 1);
    }
    return cells;
}

/// The length of a list item's mark with the blanks behind it; 0 when the line begins no item.
std::size_t itemMark(std::string_view line)
{
    if (line.starts_with("- ") || line.starts_with("* ")) {
        return 2;
    }
    const std::size_t digits = line.find_first_not_of("0123456789");
    return digits != 0 && digits != std::string_view::npos && line.substr(digits).starts_with(". ") ? digits + 2 : 0;
}

// What is literal in a heading stays as it is.
std::string inCapitals(std::string text)
{
    bool isLiteral = false;
    for (char& letter : text) {
        isLiteral = isLiteral != (letter == '`');
        letter = isLiteral ? letter : static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    }
    return text;
}

class Converter
{
public:
    explicit Converter(std::string_view markdown) : lines_(splitLines(markdown)) {}

    std::string convert()
    {
        while (next_ < lines_.size()) {
            block();
        }
        return std::move(page_);
    }

private:
    void block()
    {
        const std::string_view line = lines_[next_];
        if (trimmed(line).empty()) {
            ++next_;
        } else if (line.starts_with('#')) {
            heading();
        } else if (line.starts_with(kFence)) {
            fencedLines();
        } else if (line.starts_with(kLiteralIndent)) {
            indentedLines();
        } else if (line.starts_with('|')) {
            table();
        } else if (itemMark(line) != 0) {
            listItem();
        } else {
            paragraph();
        }
    }

    void heading()
    {
        const std::string_view line = lines_[next_++];
        const std::size_t level = line.find_first_not_of('#');
        std::string title(trimmed(line.substr(std::min(level, line.size()))));
        if (level == 1) {
            return;
        }
        if (level == 2) {
            title = inCapitals(title);
        }
        page_ += (level == 2 ? ".SH " : ".SS ") + roffInline(title) + '\n';
        needsParagraph_ = false;
    }

    // A blank line between this block and the one before, but not behind a heading.
    void beginParagraph()
    {
        if (needsParagraph_) {
            page_ += ".PP\n";
        }
        needsParagraph_ = true;
    }

    // The line itself, joined with those that go on with it.
    std::string flowingText(std::string_view first)
    {
        std::string text(trimmed(first));
        for (++next_; next_ < lines_.size(); ++next_) {
            const std::string_view line = lines_[next_];
            const std::string_view rest = trimmed(line);
            if (rest.empty() || line.starts_with('#') || line.starts_with('|') || line.starts_with(kFence) ||
                itemMark(rest) != 0) {
                break;
            }
            (text += ' ') += rest;
        }
        return text;
    }

    void paragraph()
    {
        const std::string text = flowingText(lines_[next_]);
        beginParagraph();
        page_ += roffInline(text) + '\n';
    }

    void listItem()
    {
        const std::string_view line = lines_[next_];
        const std::size_t mark = itemMark(line);
        const bool numbered = line.front() != '-' && line.front() != '*';
        page_ += numbered ? ".IP " + std::string(trimmed(line.substr(0, mark))) + " 4\n" : ".IP \\(bu 2\n";
        page_ += roffInline(flowingText(line.substr(mark))) + '\n';
        needsParagraph_ = true;
    }

    void literal(const std::vector<std::string_view>& lines)
    {
        page_ += needsParagraph_ ? ".PP\n.RS 4\n.nf\n" : ".RS 4\n.nf\n";
        for (const std::string_view line : lines) {
            page_ += roffText(line) + '\n';
        }
        page_ += ".fi\n.RE\n";
        needsParagraph_ = true;
    }

    void indentedLines()
    {
        std::vector<std::string_view> lines;
        for (; next_ < lines_.size() && (lines_[next_].starts_with(kLiteralIndent) || trimmed(lines_[next_]).empty());
             ++next_) {
            lines.push_back(lines_[next_].substr(std::min(kLiteralIndent.size(), lines_[next_].size())));
        }
        while (trimmed(lines.back()).empty()) {
            lines.pop_back();
        }
        literal(lines);
    }

    void fencedLines()
    {
        std::vector<std::string_view> lines;
        for (++next_; next_ < lines_.size() && !lines_[next_].starts_with(kFence); ++next_) {
            lines.push_back(lines_[next_]);
        }
        ++next_;
        literal(lines);
    }

    void table()
    {
        std::vector<std::vector<std::string_view>> rows;
        for (; next_ < lines_.size() && lines_[next_].starts_with('|'); ++next_) {
            rows.push_back(tableCells(lines_[next_]));
        }
        // The second row is the rule below the headings.
        rows.erase(rows.begin() + 1);
        std::vector<bool> wide(rows.front().size());
        for (const auto& row : rows) {
            for (std::size_t column = 0; column < std::min(row.size(), wide.size()); ++column) {
                wide[column] = wide[column] || row[column].size() > kWideCell;
            }
        }
        beginParagraph();
        page_ += ".TS\ntab(\t);\n" + tableFormat(wide, "lb", "lbx") + '\n' + tableFormat(wide, "l", "lx") + ".\n";
        for (const auto& row : rows) {
            tableRow(row, wide);
        }
        page_ += ".TE\n";
    }

    static std::string tableFormat(const std::vector<bool>& wide, const char* narrowColumn, const char* wideColumn)
    {
        std::string format;
        for (const bool isWide : wide) {
            (format += format.empty() ? "" : " ") += isWide ? wideColumn : narrowColumn;
        }
        return format;
    }

    void tableRow(const std::vector<std::string_view>& cells, const std::vector<bool>& wide)
    {
        std::string row;
        for (std::size_t column = 0; column < std::min(cells.size(), wide.size()); ++column) {
            row += column == 0 ? "" : "\t";
            const std::string text = roffInline(cells[column]);
            row += wide[column] && !text.empty() ? "T{\n" + text + "\nT}" : text;
        }
        page_ += row + '\n';
    }

    std::vector<std::string_view> lines_;
    std::size_t next_ = 0;
    std::string page_;
    bool needsParagraph_ = false;
};

}  // namespace

std::string manFromMarkdown(std::string_view markdown)
{
    return Converter(markdown).convert();
}
