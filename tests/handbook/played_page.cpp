#include "played_page.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "child_process.h"
#include "pty_console.h"

namespace handbook
{
namespace
{

constexpr std::string_view kFence = "```";
constexpr std::string_view kExcerpt = "```console";
constexpr const char* kTool = "tovira_util_tool";
constexpr std::string_view kExcerptOfAnyDigits = "```console digits";

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool isShellCommand(std::string_view line)
{
    return line.starts_with("$ ");
}

bool isConsoleLine(std::string_view line)
{
    return line.starts_with('>');
}

bool isTyped(std::string_view line)
{
    return isShellCommand(line) || isConsoleLine(line);
}

std::string maskedDigits(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char character) { return isdigit(static_cast<unsigned char>(character)) != 0; },
        '0');
    return text;
}

class Folder
{
public:
    Folder()
    {
        std::string name = std::filesystem::temp_directory_path() / "handbookXXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), "mkdtemp");
        }
        path_ = name;
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/** Runs what the excerpts of a page say, and keeps what comes of it. */
class Player
{
public:
    explicit Player(std::string programs) : programs_(std::move(programs)) {}

    /** Plays a block and returns its lines as they are now. */
    std::vector<std::string> play(const std::vector<std::string>& block)
    {
        lines_.clear();
        for (const std::string& line : block) {
            if (isShellCommand(line)) {
                requireNoSession(line);
                lines_.push_back(line);
                runOrStart(std::regex_replace(line.substr(2), std::regex(R"(^\./run\b)"), kTool));
            } else if (isConsoleLine(line)) {
                type(line.substr(1));
            }
        }
        return lines_;
    }

    void end() const { requireNoSession("the end of the page"); }

private:
    void requireNoSession(const std::string& line) const
    {
        if (session_ != nullptr) {
            throw std::runtime_error("a session is still open at: " + line);
        }
    }

    std::vector<std::string> shellCommand(const std::string& text) const
    {
        const char* const path = getenv("PATH");
        return {"/usr/bin/env",
                "--chdir=" + folder_.path().string(),
                "LC_ALL=C",
                "TZ=UTC",
                "PATH=" + programs_ + ":" + (path == nullptr ? "/usr/bin:/bin" : path),
                "/bin/sh",
                "-c",
                text};
    }

    void runOrStart(const std::string& text)
    {
        static const std::regex session(R"((\w+=\S+ )*tovira_util_tool( --(card|gpu|mem|tty) \S+)*)");
        if (std::regex_match(text, session)) {
            session_ = std::make_unique<PtyConsole>(PtyCommand{.arguments = shellCommand(text)});
            takePrompt();
            return;
        }
        const child_process::Result result = child_process::run({.arguments = shellCommand("exec 2>&1; " + text)});
        addOutput(result.output);
    }

    // Output up to the next prompt, which is not part of it, or to the end of the session.
    void takePrompt()
    {
        std::string output = session_->readThrough(">");
        // A '>' of the output is followed by more of it; at the prompt the program waits for a key.
        while (!atPrompt(output)) {
            const std::string more = session_->readThrough(">");
            if (more.empty() || !more.ends_with('>')) {
                addOutput(withoutReturns(output + more));
                session_.reset();
                return;
            }
            output += more;
        }
        output.pop_back();
        addOutput(withoutReturns(output));
    }

    static bool atPrompt(const std::string& output) { return output == ">" || output.ends_with("\n>"); }

    void type(const std::string& line)
    {
        if (session_ == nullptr) {
            throw std::runtime_error("there is no session for: >" + line);
        }
        if (!session_->send(line + "\r")) {
            throw std::runtime_error("the program does not wait for: >" + line);
        }
        const std::string echo = withoutReturns(session_->readThrough("\n"));
        lines_.push_back(">" + echo.substr(0, echo.size() - 1));
        takePrompt();
    }

    static std::string withoutReturns(std::string text)
    {
        std::erase(text, '\r');
        return text;
    }

    void addOutput(const std::string& output)
    {
        const std::vector<std::string> added = linesOf(output);
        lines_.insert(lines_.end(), added.begin(), added.end());
    }

    std::string programs_;
    Folder folder_;
    std::unique_ptr<PtyConsole> session_;
    std::vector<std::string> lines_;
};

std::vector<std::string> merged(const std::vector<std::string>& block, std::vector<std::string> played, bool anyDigits)
{
    for (std::size_t i = 0; anyDigits && i < std::min(block.size(), played.size()); ++i) {
        if (maskedDigits(played[i]) == maskedDigits(block[i])) {
            played[i] = block[i];
        }
    }
    return played;
}

/** Calls `excerpt` with the lines of every excerpt and whether its digits count, and `other` with every other line. */
template <typename Excerpt, typename Other>
void forEachPart(const std::string& page, Excerpt excerpt, Other other)
{
    std::optional<std::vector<std::string>> block;
    bool anyDigits = false;
    for (const std::string& line : linesOf(page)) {
        if (block.has_value() && line == kFence) {
            excerpt(*block, anyDigits);
            block.reset();
            other(line);
        } else if (block.has_value()) {
            block->push_back(line);
        } else {
            other(line);
            if (line.starts_with(kExcerpt)) {
                block.emplace();
                anyDigits = line == kExcerptOfAnyDigits;
            }
        }
    }
    if (block.has_value()) {
        throw std::runtime_error("an excerpt does not end");
    }
}

std::string escaped(const std::string& text)
{
    std::string result;
    for (const char character : text) {
        switch (character) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            default:
                result += character;
        }
    }
    return result;
}

// Tabs as the terminal shows them.
std::string expanded(const std::string& line)
{
    constexpr std::size_t kTab = 8;
    std::string result;
    for (const char character : line) {
        result += character == '\t' ? std::string(kTab - result.size() % kTab, ' ') : std::string(1, character);
    }
    return result;
}

}  // namespace

std::string playedPage(const std::string& page, const std::string& programs)
{
    Player player(programs);
    std::string result;
    const auto add = [&result](const std::string& line) { result += line + '\n'; };
    forEachPart(
        page,
        [&](const std::vector<std::string>& block, bool anyDigits) {
            for (const std::string& line : merged(block, player.play(block), anyDigits)) {
                add(line);
            }
        },
        add);
    player.end();
    return result;
}

std::vector<std::string> excerptLines(const std::string& page)
{
    std::vector<std::string> lines;
    forEachPart(
        page,
        [&lines](const std::vector<std::string>& block, bool) {
            lines.insert(lines.end(), block.begin(), block.end());
        },
        [](const std::string&) {});
    return lines;
}

std::string terminalPicture(const std::vector<std::string>& lines, const std::string& title)
{
    constexpr std::size_t kCharacterWidth = 8;
    constexpr std::size_t kLineHeight = 18;
    constexpr std::size_t kMargin = 16;
    std::size_t columns = 0;
    for (const std::string& line : lines) {
        columns = std::max(columns, expanded(line).size());
    }
    const std::size_t width = columns * kCharacterWidth + 2 * kMargin;
    const std::size_t height = lines.size() * kLineHeight + 2 * kMargin;
    std::ostringstream svg;
    svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
        << "\" viewBox=\"0 0 " << width << ' ' << height << "\" role=\"img\">\n<title>" << escaped(title)
        << "</title>\n<rect width=\"100%\" height=\"100%\" rx=\"8\" fill=\"#1b1f24\"/>\n"
        << "<g font-family=\"monospace\" font-size=\"13\" fill=\"#e6edf3\" xml:space=\"preserve\">\n";
    std::size_t baseline = kMargin + kLineHeight - 5;
    for (const std::string& line : lines) {
        const std::string text = expanded(line);
        if (!text.empty()) {
            // The length holds the columns in place, whatever font the viewer has.
            svg << "<text x=\"" << kMargin << "\" y=\"" << baseline << "\" textLength=\""
                << text.size() * kCharacterWidth << "\" lengthAdjust=\"spacingAndGlyphs\""
                << (isTyped(line) ? " fill=\"#7ee787\"" : "") << '>' << escaped(text) << "</text>\n";
        }
        baseline += kLineHeight;
    }
    svg << "</g>\n</svg>\n";
    return svg.str();
}

}  // namespace handbook
