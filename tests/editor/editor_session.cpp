#include "editor_session.h"

#include <gtest/gtest.h>
#include <sanitizer/lsan_interface.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "child_process.h"
#include "tovira_parse/line_editor.h"
#include "tovira_parse/terminal.h"

namespace
{

constexpr int kControlCByte = 3;
// The first Ctrl-C may be swallowed by an unfinished escape sequence.
constexpr int kMostControlCs = 2;

/** Where the editor stands, in the process that runs it. */
struct Player {
    std::vector<int> keys;
    std::size_t next = 0;
    int controlCs = 0;
    std::vector<std::size_t> outputEnds; /**< output length at each read of a key */

    void noteOutput()
    {
        std::fflush(stdout);
        outputEnds.push_back(static_cast<std::size_t>(lseek(STDOUT_FILENO, 0, SEEK_CUR)));
    }
};

Player player;

void put(std::string& report, std::string_view bytes)
{
    const auto size = static_cast<std::uint32_t>(bytes.size());
    report.append(reinterpret_cast<const char*>(&size), sizeof size);
    report.append(bytes);
}

// Plays the keys to standard output, and reports each line on standard error: the result, the buffer, the output's
// length at each read of a key and at the end.
void runEditor(const std::vector<int>& keys)
{
    player.keys = keys;
    std::string report;
    do {
        player.controlCs = 0;
        player.outputEnds.clear();
        const int result = getCmdLine();
        player.noteOutput();
        put(report, std::to_string(result));
        put(report, std::string_view(CmdLines, sizeof CmdLines));
        put(report, std::string_view(reinterpret_cast<const char*>(player.outputEnds.data()),
                                     player.outputEnds.size() * sizeof(std::size_t)));
    } while (player.next < player.keys.size());
    std::fwrite(report.data(), 1, report.size(), stderr);
}

/** The report of the editor's process, read piece by piece. */
class Report
{
public:
    explicit Report(std::string bytes) : bytes_(std::move(bytes)) {}

    bool atEnd() const { return position_ == bytes_.size(); }

    std::string take()
    {
        std::uint32_t size = 0;
        std::memcpy(&size, bytes_.substr(position_, sizeof size).data(), sizeof size);
        position_ += sizeof size;
        std::string piece = bytes_.substr(position_, size);
        position_ += size;
        return piece;
    }

    std::vector<std::size_t> takeNumbers()
    {
        const std::string bytes = take();
        std::vector<std::size_t> numbers(bytes.size() / sizeof(std::size_t));
        std::memcpy(numbers.data(), bytes.data(), bytes.size());
        return numbers;
    }

private:
    std::string bytes_;
    std::size_t position_ = 0;
};

}  // namespace

// Every session ends a process. The editor takes no memory that could leak, and looking for leaks thousands of times
// would take most of the tests' time.
int __lsan_is_turned_off()
{
    return 1;
}

int my_getch()
{
    player.noteOutput();
    if (player.next < player.keys.size()) {
        return player.keys[player.next++];
    }
    if (++player.controlCs > kMostControlCs) {
        std::fputs("the editor goes on reading after Ctrl-C\n", stderr);
        std::abort();
    }
    return kControlCByte;
}

std::string EditedLine::output() const
{
    std::string all;
    for (const std::string& piece : shown) {
        all += piece;
    }
    return all;
}

std::vector<int> keysOf(const std::string& bytes)
{
    std::vector<int> keys;
    for (const char byte : bytes) {
        keys.push_back(static_cast<unsigned char>(byte));
    }
    return keys;
}

Session play(const std::vector<int>& keys)
{
    const child_process::Result played = child_process::runForked([&keys] { runEditor(keys); });
    if (played.exitStatus != 0) {
        ADD_FAILURE() << "the editor's process ended with status " << played.exitStatus << ", signal " << played.signal
                      << (played.timedOut ? ", after its time was over" : "") << "\n"
                      << played.error;
        return {};
    }
    Report report(played.error);
    Session session;
    std::size_t start = 0;
    while (!report.atEnd()) {
        EditedLine line;
        line.result = std::stoi(report.take());
        line.buffer = report.take();
        for (const std::size_t end : report.takeNumbers()) {
            line.shown.push_back(played.output.substr(start, end - start));
            start = end;
        }
        session.push_back(std::move(line));
    }
    return session;
}

Session play(const std::string& bytes)
{
    return play(keysOf(bytes));
}

std::vector<std::string> texts(const Session& session)
{
    std::vector<std::string> all;
    for (const EditedLine& line : session) {
        if (line.result == 0) {
            all.push_back(line.text());
        }
    }
    return all;
}

std::string output(const Session& session)
{
    std::string all;
    for (const EditedLine& line : session) {
        all += line.output();
    }
    return all;
}

std::string readable(const std::string& bytes)
{
    std::string text = "\"";
    for (const char byte : bytes) {
        if (byte >= ' ' && byte <= '~') {
            text += byte;
        } else {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\x%02x", static_cast<unsigned>(byte) & 0xffU);
            text += escape.data();
        }
    }
    return text + "\"";
}
