#include "console_support.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>

#include "captured_output.h"
#include "tovira_parse/dispatcher.h"
#include "tovira_parse/line_editor.h"

namespace console_test
{
namespace
{

/** Where the calls begin that no takeDeviceCalls() has seen. */
std::size_t seenCalls = 0;

Outcome capture(const std::function<int()>& run)
{
    CapturedOutput output;
    CapturedError error;
    Outcome outcome;
    outcome.status = run();
    outcome.output = output.take();
    outcome.error = error.take();
    return outcome;
}

bool asksAboutConnection(const std::string& line)
{
    return line == "get_s_type()" || line == "get_device_id()";
}

}  // namespace

void PrintTo(const Outcome& outcome, std::ostream* stream)
{
    *stream << "status " << outcome.status << ", output " << ::testing::PrintToString(outcome.output) << ", error "
            << ::testing::PrintToString(outcome.error);
}

Outcome call(CmdHandler handler, std::string text, int repeat)
{
    return capture([&] { return handler(text.data(), repeat); });
}

void setCmdLines(std::string_view line)
{
    if (line.size() >= sizeof CmdLines) {
        throw std::length_error("the line does not fit CmdLines");
    }
    std::fill(std::begin(CmdLines), std::end(CmdLines), '\0');
    std::copy(line.begin(), line.end(), std::begin(CmdLines));
}

Outcome runCmdLines()
{
    return capture(parseAndRunCmd);
}

Outcome runLine(std::string_view line)
{
    setCmdLines(line);
    return runCmdLines();
}

Outcome runOnce(std::string text)
{
    return capture([&] { return parseAndRunOpt(text.data()); });
}

std::vector<std::string> takeDeviceCalls()
{
    const std::vector<std::string>& all = recording_vek::calls();
    std::vector<std::string> taken;
    std::remove_copy_if(all.begin() + static_cast<std::ptrdiff_t>(seenCalls), all.end(), std::back_inserter(taken),
                        asksAboutConnection);
    seenCalls = all.size();
    return taken;
}

int modeRequests()
{
    const std::vector<std::string>& all = recording_vek::calls();
    return static_cast<int>(
        std::count(all.begin() + static_cast<std::ptrdiff_t>(seenCalls), all.end(), "get_s_type()"));
}

ConsoleTest::ConsoleTest()
{
    recording_vek::reset();
    seenCalls = 0;
    setCmdLines("");
}

FolderTest::FolderTest() : previous_(std::filesystem::current_path())
{
    std::string name = std::filesystem::temp_directory_path() / "console_testXXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot create " + name);
    }
    folder_ = name;
    std::filesystem::current_path(folder_);
}

FolderTest::~FolderTest()
{
    std::error_code ignored;
    std::filesystem::current_path(previous_, ignored);
    std::filesystem::remove_all(folder_, ignored);
}

void writeFile(const std::filesystem::path& path, std::string_view contents)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

std::string readFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

std::ptrdiff_t countOpenDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

std::string bytes(const std::vector<int>& values)
{
    std::string text;
    std::transform(values.begin(), values.end(), std::back_inserter(text),
                   [](int value) { return static_cast<char>(value); });
    return text;
}

}  // namespace console_test
