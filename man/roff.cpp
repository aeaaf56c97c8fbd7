#include "roff.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <span>

namespace
{

/// One code point of UTF-8 text.
struct CodePoint {
    std::uint32_t value;
    std::size_t bytes;
};

CodePoint decodeUtf8(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t wanted = first < 0xc0U ? 1 : first < 0xe0U ? 2 : first < 0xf0U ? 3 : 4;
    if (wanted == 1 || wanted > text.size()) {
        return {first, 1};
    }
    std::uint32_t value = first & (0xffU >> (wanted + 1));
    for (const char next : text.substr(1, wanted - 1)) {
        value = value << 6U | (static_cast<unsigned char>(next) & 0x3fU);
    }
    return {value, wanted};
}

std::string roffCharacter(CodePoint point)
{
    switch (point.value) {
        case '\\':
            return "\\(rs";
        case '-':
            return "\\-";
        case '\'':
            return "\\(aq";
        case '`':
            return "\\(ga";
        case '^':
            return "\\(ha";
        case '~':
            return "\\(ti";
        default:
            break;
    }
    if (point.value < 0x80U) {
        return {static_cast<char>(point.value)};
    }
    char escape[16];
    std::snprintf(escape, sizeof escape, "\\[u%04X]", point.value);
    return escape;
}

// A line that begins with a dot would be a request.
std::string protectedStart(std::string line)
{
    if (line.starts_with('.')) {
        line.insert(0, "\\&");
    }
    return line;
}

/// A mark that is at the front of the text and closed later on: what it encloses, and how long all of it is.
struct Marked {
    std::string_view inside;
    std::size_t length = 0;
};

Marked enclosed(std::string_view text, std::string_view mark)
{
    if (!text.starts_with(mark)) {
        return {};
    }
    const std::size_t end = text.find(mark, mark.size() + 1);
    if (end == std::string_view::npos) {
        return {};
    }
    return {text.substr(mark.size(), end - mark.size()), end + mark.size()};
}

Marked link(std::string_view text)
{
    const std::size_t middle = text.starts_with('[') ? text.find("](") : std::string_view::npos;
    const std::size_t end = middle == std::string_view::npos ? middle : text.find(')', middle);
    if (end == std::string_view::npos) {
        return {};
    }
    return {text.substr(1, middle - 1), end + 1};
}

}  // namespace

std::string roffText(std::string_view text)
{
    std::string roff;
    while (!text.empty()) {
        const CodePoint point = decodeUtf8(text);
        roff += roffCharacter(point);
        text.remove_prefix(point.bytes);
    }
    return protectedStart(roff);
}

std::string roffLines(std::string_view text)
{
    std::string roff;
    while (!text.empty()) {
        const std::size_t length = text.find('\n');
        roff += roffText(text.substr(0, length)) + '\n';
        text.remove_prefix(length == std::string_view::npos ? text.size() : length + 1);
    }
    return roff;
}

std::string roffInline(std::string_view markdown)
{
    std::string roff;
    while (!markdown.empty()) {
        if (const Marked code = enclosed(markdown, "`"); code.length != 0) {
            roff += "\\fB" + roffText(code.inside) + "\\fR";
            markdown.remove_prefix(code.length);
        } else if (const Marked strong = enclosed(markdown, "**"); strong.length != 0) {
            roff += "\\fB" + roffText(strong.inside) + "\\fR";
            markdown.remove_prefix(strong.length);
        } else if (const Marked emphasis = enclosed(markdown, "*"); emphasis.length != 0) {
            roff += "\\fI" + roffText(emphasis.inside) + "\\fR";
            markdown.remove_prefix(emphasis.length);
        } else if (const Marked reference = link(markdown); reference.length != 0) {
            roff += roffInline(reference.inside);
            markdown.remove_prefix(reference.length);
        } else {
            const CodePoint point = decodeUtf8(markdown);
            roff += roffCharacter(point);
            markdown.remove_prefix(point.bytes);
        }
    }
    return protectedStart(roff);
}

std::string withoutEmptyParagraphs(std::string_view page)
{
    constexpr std::string_view kParagraph = ".PP";
    constexpr std::array<std::string_view, 4> kBeginners = {".SH ", ".SS ", ".RS ", kParagraph};
    constexpr std::array<std::string_view, 6> kEnders = {".SH ", ".SS ", ".RE", ".TP", ".IP ", kParagraph};
    const auto isOneOf = [](std::string_view line, std::span<const std::string_view> requests) {
        return std::any_of(requests.begin(), requests.end(),
                           [line](std::string_view request) { return line.starts_with(request); });
    };
    std::string tidied;
    std::string_view previous;
    while (!page.empty()) {
        const std::size_t length = std::min(page.find('\n'), page.size() - 1) + 1;
        const std::string_view line = page.substr(0, length);
        page.remove_prefix(length);
        if (line.starts_with(kParagraph) && (page.empty() || isOneOf(previous, kBeginners) || isOneOf(page, kEnders))) {
            continue;
        }
        tidied += line;
        previous = line;
    }
    return tidied;
}
