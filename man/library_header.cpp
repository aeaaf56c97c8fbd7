#include "library_header.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "roff.h"

namespace
{

enum class Kind { kFamily, kNote, kType, kFunction };

/// A declaration with the comment before it, a comment of its own, or the heading of a family of functions.
struct Item {
    Kind kind;
    std::string comment;  ///< without its marks, each line as it stands behind them
    std::string text;     ///< the declaration or the heading
};

constexpr std::string_view kFamilyMark = "/* ---- ";
constexpr std::string_view kBlanks = " \t\n";

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Takes what comes before the mark, and the mark, from the front of the text.
std::string_view takeThrough(std::string_view& text, std::string_view mark)
{
    const std::size_t length = std::min(text.find(mark), text.size());
    const std::string_view taken = text.substr(0, length);
    text.remove_prefix(std::min(length + mark.size(), text.size()));
    return taken;
}

std::string_view takeLine(std::string_view& text)
{
    return takeThrough(text, "\n");
}

std::string onOneLine(std::string_view text)
{
    std::string line;
    for (const char letter : trimmed(text)) {
        const bool isBlank = std::isspace(static_cast<unsigned char>(letter)) != 0;
        if (!isBlank || line.back() != ' ') {
            line += isBlank ? ' ' : letter;
        }
    }
    return line;
}

std::vector<Item> itemsOf(std::string_view header)
{
    std::vector<Item> items;
    std::string comment;
    while (!(header = header.substr(std::min(header.find_first_not_of(kBlanks), header.size()))).empty()) {
        if (header.starts_with(kFamilyMark)) {
            header.remove_prefix(kFamilyMark.size());
            items.push_back({Kind::kFamily, "", std::string(takeThrough(header, " ---"))});
            takeLine(header);
        } else if (header.starts_with("/**")) {
            header.remove_prefix(3);
            comment = takeThrough(header, "*/");
        } else if (header.starts_with("/*")) {
            header.remove_prefix(2);
            items.push_back({Kind::kNote, std::string(takeThrough(header, "*/")), ""});
        } else if (header.starts_with("enum ") || header.starts_with("struct ")) {
            items.push_back({Kind::kType, comment, std::string(takeThrough(header, "};"))});
        } else if (header.starts_with('#') || header.starts_with("extern \"C\"") || header.starts_with('}')) {
            takeLine(header);
        } else {
            items.push_back({Kind::kFunction, comment, onOneLine(takeThrough(header, ";"))});
        }
    }
    return items;
}

/// What a type declares: a field with its type, or a constant with its value, and the comment behind it.
struct Member {
    std::string name;
    std::string type;
    std::string value;
    std::string comment;
};

bool isRecord(const Item& type)
{
    return type.text.starts_with("struct ");
}

std::string nameOfType(const Item& type)
{
    std::string_view text = type.text;
    takeThrough(text, " ");
    return std::string(trimmed(takeThrough(text, "{")));
}

Member fieldOf(const std::string& code)
{
    const std::size_t blank = code.rfind(' ');
    return {code.substr(blank + 1), code.substr(0, blank), "", ""};
}

Member constantOf(const std::string& code)
{
    std::string_view value = code;
    const std::string name(trimmed(takeThrough(value, "=")));
    return {name, "", std::string(trimmed(value)), ""};
}

// A comment behind a member stands behind its separator, but that of the last constant has none.
std::vector<Member> membersOf(const Item& type)
{
    std::string_view body = type.text;
    takeThrough(body, "{");
    const std::string_view separator = isRecord(type) ? ";" : ",";
    std::vector<Member> members;
    while (!trimmed(body).empty()) {
        const std::size_t comment = body.find("/**<");
        if (!members.empty() && trimmed(body).starts_with("/**<")) {
            body.remove_prefix(comment + 4);
            members.back().comment = onOneLine(takeThrough(body, "*/"));
            continue;
        }
        const std::size_t end = std::min(body.find(separator), comment);
        const std::string code = onOneLine(body.substr(0, end));
        body.remove_prefix(std::min(end, body.size()));
        body.remove_prefix(body.starts_with(separator) ? separator.size() : 0);
        members.push_back(isRecord(type) ? fieldOf(code) : constantOf(code));
    }
    return members;
}

std::string declarationOf(const Member& member)
{
    return member.type.empty() ? member.name + " = " + member.value : member.type + ' ' + member.name;
}

/// The lines of a comment, cut by what they are: flowing text, literal lines, or an item of a list.
class CommentPage
{
public:
    /// @param margin blanks before the comment's lines; further ones make a line literal
    explicit CommentPage(std::size_t margin) : margin_(margin) {}

    std::string convert(std::string_view comment)
    {
        bool isFirst = true;
        while (!comment.empty()) {
            const std::string_view line = takeLine(comment);
            const std::size_t blanks = std::min(line.find_first_not_of(' '), line.size());
            addLine(line, blanks, !isFirst && blanks >= margin_ + 2);
            isFirst = false;
        }
        endLiteral();
        return std::move(page_);
    }

private:
    void addLine(std::string_view line, std::size_t blanks, bool isLiteral)
    {
        const std::string_view text = trimmed(line);
        if (text.empty()) {
            endLiteral();
            afterBlank_ = !page_.empty();
        } else if (isLiteral) {
            page_ += inLiteral_ ? "" : ".PP\n.nf\n";
            inLiteral_ = true;
            page_ += roffText(std::string(blanks - margin_, ' ') + std::string(text)) + '\n';
        } else {
            endLiteral();
            page_ += afterBlank_ ? ".PP\n" : "";
            flow(text);
            afterBlank_ = false;
        }
    }

    void endLiteral()
    {
        if (inLiteral_) {
            page_ += ".fi\n";
            afterBlank_ = true;
        }
        inLiteral_ = false;
    }

    // Each of the comment's commands begins a paragraph of its own.
    void flow(std::string_view text)
    {
        while (!text.empty()) {
            const std::size_t command = text.find('@', 1);
            addPiece(trimmed(text.substr(0, command)));
            text.remove_prefix(std::min(command, text.size()));
        }
    }

    void addPiece(std::string_view text)
    {
        if (text.starts_with("@param ")) {
            takeThrough(text, " ");
            std::string_view names = takeThrough(text, " ");
            std::string tag(names);
            while (tag.ends_with(',')) {
                (tag += ' ') += takeThrough(text, " ");
            }
            page_ += ".TP\n.I " + roffText(tag) + '\n';
        } else if (text.starts_with("@return")) {
            takeThrough(text, "@return");
            page_ += ".TP\nReturns\n";
        } else if (text.starts_with("@see")) {
            takeThrough(text, "@see");
            page_ += ".TP\nSee\n";
        }
        if (!trimmed(text).empty()) {
            page_ += roffText(trimmed(text)) + '\n';
        }
    }

    std::size_t margin_;
    std::string page_;
    bool inLiteral_ = false;
    bool afterBlank_ = false;
};

// Comments before declarations go on behind four blanks, others behind three.
constexpr std::size_t kDocMargin = 4;
constexpr std::size_t kNoteMargin = 3;

std::string printerOfField(const std::string& type, const Member& field)
{
    std::string code("    printField(\"");
    code.append(field.type).append(" ").append(field.name).append("\", offsetof(").append(type).append(", ");
    code.append(field.name).append("), sizeof(").append(type).append("::").append(field.name).append("));\n");
    return code;
}

std::string printerOfConstant(const std::string& type, const Member& constant)
{
    std::string code("    printConstant(\"");
    code.append(type).append("\", \"").append(constant.name).append("\", ").append(constant.name).append(");\n");
    return code;
}

std::string printersOfType(const Item& item)
{
    const std::string type = nameOfType(item);
    std::string code;
    if (isRecord(item)) {
        code.append("    printRecord(\"").append(type).append("\", sizeof(").append(type);
        code.append("), alignof(").append(type).append("));\n");
    }
    for (const Member& member : membersOf(item)) {
        code += isRecord(item) ? printerOfField(type, member) : printerOfConstant(type, member);
    }
    return code;
}

}  // namespace

std::string manOfConventions(std::string_view header)
{
    takeThrough(header, "@file");
    takeLine(header);
    std::string_view comment = takeThrough(header, "*/");
    std::string page;
    while (!comment.empty()) {
        std::string_view line = trimmed(takeLine(comment));
        line = trimmed(line.substr(line.starts_with('*') ? 1 : 0));
        if (line.starts_with("- ")) {
            page += ".IP \\(bu 2\n";
            line.remove_prefix(2);
        } else if (line.empty() && !page.empty()) {
            page += ".PP\n";
        }
        page += line.empty() ? "" : roffText(line) + '\n';
    }
    return withoutEmptyParagraphs(page);
}

std::string manOfTypes(std::string_view header)
{
    std::string page;
    for (const Item& item : itemsOf(header)) {
        if (item.kind != Kind::kType) {
            continue;
        }
        page += ".SS " + std::string(isRecord(item) ? "struct " : "enum ") + nameOfType(item) + '\n';
        page += CommentPage(kDocMargin).convert(item.comment);
        for (const Member& member : membersOf(item)) {
            page += ".TP\n.B " + roffText(declarationOf(member)) + '\n';
            page += member.comment.empty() ? "\\&\n" : roffText(member.comment) + '\n';
        }
    }
    return withoutEmptyParagraphs(page);
}

std::string manOfFunctions(std::string_view header)
{
    std::string page;
    bool inFamily = false;
    for (const Item& item : itemsOf(header)) {
        if (item.kind == Kind::kFamily) {
            inFamily = true;
            page += ".SS " + roffText(item.text) + '\n';
        } else if (item.kind == Kind::kNote && inFamily) {
            page += CommentPage(kNoteMargin).convert(item.comment);
        } else if (item.kind == Kind::kFunction) {
            page += ".PP\n.B " + roffText(item.text) + ";\n.RS 4\n";
            page += CommentPage(kDocMargin).convert(item.comment) + ".RE\n";
        }
    }
    return withoutEmptyParagraphs(page);
}

std::string printersOfInterface(std::string_view header)
{
    std::string code;
    for (const Item& item : itemsOf(header)) {
        if (item.kind == Kind::kFunction) {
            code.append("    std::puts(\"").append(item.text).append("\");\n");
        } else if (item.kind == Kind::kType) {
            code += printersOfType(item);
        }
    }
    return code;
}
