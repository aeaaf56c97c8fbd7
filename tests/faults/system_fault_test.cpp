// The finished program, on the simulated card, while the system's calls fail it.

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "command_lines.h"
#include "console_support.h"
#include "observation.h"
#include "syscall_faults.h"
#include "tovira_parse/handlers.h"

namespace faults_test
{
namespace
{

using console_test::FolderTest;
using testing::HasSubstr;

using Files = std::map<std::string, std::string>;

constexpr std::string_view kAxiDataHeading = "time,master,reads,writes,bytes,latency\n";

/** Data of the AXI monitor differs from run to run; what stays is that it is whole lines with a heading. */
std::string lastingPart(const std::string& axiData)
{
    const bool whole = axiData.starts_with(kAxiDataHeading) && axiData.ends_with('\n');
    return whole ? "whole lines" : axiData;
}

/** The files in the current folder, with what they hold. */
Files filesHere()
{
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(".")) {
        if (entry.path().filename() == "axiMonitorData") {
            files["axiMonitorData"] = lastingPart(console_test::readFile(entry.path()));
        } else if (entry.is_regular_file()) {
            files[entry.path().string()] = console_test::readFile(entry.path());
        }
    }
    return files;
}

Files inputFiles()
{
    return {{"./image", "an image"}, {"./script", "rrb 0\nrrb 4\n"}};
}

Files withAxiData(const std::string& lasting)
{
    Files files = inputFiles();
    files["axiMonitorData"] = lasting;
    return files;
}

/** The text without the line that tells the time of the day. */
std::string withoutTime(const std::string& text)
{
    const std::size_t at = text.find("time_foldername: ");
    return at == std::string::npos ? text : text.substr(0, at) + text.substr(text.find('\n', at) + 1);
}

/** What a run left behind. */
struct Traces {
    TracedRun run;
    Files files;
};

bool isOneOf(const SystemCall& call, std::initializer_list<std::uint64_t> numbers)
{
    return std::find(numbers.begin(), numbers.end(), call.number) != numbers.end();
}

bool isOf(const SystemCall& call, int descriptor)
{
    return static_cast<int>(call.arguments[0]) == descriptor;
}

/** What writes to the standard streams is C stdio, which the library prints with, too. */
bool writesToStandardStream(const SystemCall& call)
{
    return call.number == SYS_write && (isOf(call, STDOUT_FILENO) || isOf(call, STDERR_FILENO));
}

bool mayBlock(const SystemCall& call)
{
    return !writesToStandardStream(call) &&
           isOneOf(call, {SYS_read, SYS_write, SYS_openat, SYS_poll, SYS_ppoll, SYS_select, SYS_pselect6, SYS_nanosleep,
                          SYS_clock_nanosleep, SYS_flock, SYS_fsync, SYS_close});
}

bool waits(const SystemCall& call)
{
    return isOneOf(call, {SYS_nanosleep, SYS_clock_nanosleep});
}

bool createsFile(const SystemCall& call)
{
    return call.number == SYS_openat && (call.arguments[2] & O_CREAT) != 0;
}

bool writesToFile(const SystemCall& call)
{
    return call.number == SYS_write && !writesToStandardStream(call);
}

/** Closing of a file that has been written to: where a file system tells of what it could not keep. */
class ClosesWrittenFile
{
public:
    bool operator()(const SystemCall& call)
    {
        const int descriptor = static_cast<int>(call.arguments[0]);
        if (writesToFile(call)) {
            written_.insert(descriptor);
        }
        return call.number == SYS_close && written_.erase(descriptor) > 0;
    }

private:
    std::set<int> written_{};
};

class SystemFaultTest : public FolderTest
{
protected:
    void SetUp() override
    {
        if (!canTrace()) {
            GTEST_SKIP() << "no process can be traced here";
        }
    }

    /** One line of each kind, since the names of the commands make no difference to the system; of each handler where
        a sanitizer makes every start of the program slow. */
    static std::vector<CommandLine> linesOfEachKind()
    {
        std::vector<CommandLine> lines;
        std::set<const Example*> examples;
        std::map<CmdHandler, int> ofHandler;
        constexpr int kMostWhenSlow = 3;
        for (const CommandLine& line : commandLines()) {
            if (examples.insert(line.example).second &&
                (!TOVIRA_INSTRUMENTED || ++ofHandler[line.row->handler] <= kMostWhenSlow)) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    /** Whether a line's waits are its own, rather than those of a driver for a device, which takes its time. */
    static bool waitsForLong(const CommandLine& line)
    {
        const CmdHandler handler = line.row->handler;
        return handler == doVer || handler == doZV || handler == doMonitor;
    }

    /** Runs a line in the current folder, which holds nothing but the input files before. Long waits are passed over.
     */
    static Traces run(const CommandLine& line, CallFaults faults)
    {
        for (const auto& entry : std::filesystem::directory_iterator(".")) {
            std::filesystem::remove_all(entry);
        }
        writeInputFiles();
        TracedCommand command = {.arguments = {TOVIRA_UTIL_TOOL}, .input = std::string(line.example->keys)};
        if (line.example->deviceId == 0x202) {
            command.arguments.insert(command.arguments.end(), {"--card", "1"});
        }
        const std::string before(line.family->before);
        command.arguments.insert(command.arguments.end(),
                                 {"--cmd", before.empty() ? line.text : before + ';' + line.text});
        if (waitsForLong(line)) {
            faults.push_back({.matches = waits, .error = 0, .occurrence = 0});
        }
        Traces traces = {.run = runWithFaults(command, faults), .files = {}};
        traces.files = filesHere();
        return traces;
    }

    /** A run in which nothing fails, to count what might. */
    static Traces runWhole(const CommandLine& line, std::function<bool(const SystemCall& call)> matches)
    {
        return run(line, {{.matches = std::move(matches), .error = 0, .occurrence = -1}});
    }

    static void expectEnd(const Traces& traces)
    {
        EXPECT_FALSE(traces.run.timedOut);
        EXPECT_EQ(traces.run.signal, 0);
        EXPECT_EQ(traces.run.exitStatus, 0);
    }
};

/** The display of `info` draws itself once more when the look at the keyboard is interrupted. */
bool drawsOnce(const CommandLine& line)
{
    return line.row->name != std::string("info");
}

/** The C library writes an error's text to a stream of its own. */
bool printsSystemError(const CommandLine& line)
{
    return line.text == "load missing";
}

/** A collector that is cancelled at once has created its file or not, and its unwinder may not be found in the hurry.
 */
bool races(const CommandLine& line)
{
    return line.row->handler == doMonitor && line.example->deviceId == 0x202;
}

/** The calls to fail out of a number of them: all, or the first and the last ones of many. */
std::vector<int> callsToFail(int number)
{
    constexpr int kManyCalls = 8;
    std::vector<int> calls;
    for (int call = 1; call <= number; ++call) {
        if (call <= kManyCalls / 2 || call > number - kManyCalls / 2) {
            calls.push_back(call);
        }
    }
    return calls;
}

TEST_F(SystemFaultTest, MakesAnInterruptedCallAgain)
{
    int interrupted = 0;
    for (const CommandLine& line : linesOfEachKind()) {
        SCOPED_TRACE(line.text);
        const Traces whole = runWhole(line, mayBlock);
        expectEnd(whole);
        for (const int number : callsToFail(whole.run.matching.front())) {
            SCOPED_TRACE(number);
            const Traces seen = run(line, {{.matches = mayBlock, .error = EINTR, .occurrence = number}});
            ++interrupted;
            expectEnd(seen);
            if (races(line)) {
                EXPECT_THAT(seen.files, testing::AnyOf(withAxiData("whole lines"), inputFiles()));
                continue;
            }
            if (drawsOnce(line)) {
                EXPECT_EQ(seen.run.output, whole.run.output);
            }
            if (!printsSystemError(line)) {
                EXPECT_EQ(seen.run.error, whole.run.error);
            }
            EXPECT_EQ(seen.files, whole.files);
        }
    }
    EXPECT_GT(interrupted, 0);
    std::cout << "Interrupted calls: " << interrupted << "\n";
}

/** Whether a line's file is created before anything is read, and its failure an error. */
bool createsFirst(const CommandLine& line)
{
    return line.row->handler == doMultReg || line.row->handler == doCrtcReg;
}

TEST_F(SystemFaultTest, TellsOfAFileThatCannotBeCreated)
{
    int refused = 0;
    for (const CommandLine& line : linesOfEachKind()) {
        SCOPED_TRACE(line.text);
        const Traces whole = runWhole(line, createsFile);
        for (const int error : {EROFS, EACCES, ENOSPC, EMFILE}) {
            if (whole.run.matching.front() == 0) {
                continue;
            }
            ++refused;
            const Traces seen = run(line, {{.matches = createsFile, .error = error, .occurrence = 0}});
            expectEnd(seen);
            EXPECT_EQ(seen.files, inputFiles());
            EXPECT_EQ(seen.run.error, "");
            if (createsFirst(line)) {
                const std::string name = line.text.substr(line.text.rfind(' ') + 1) == "saved" ? "SAVED" : "5A";
                EXPECT_THAT(seen.run.output,
                            HasSubstr("!\nOpen " + name + " error\n" + std::string(console_test::kBadCommandLine)));
            } else {
                EXPECT_EQ(withoutTime(seen.run.output), withoutTime(whole.run.output));
            }
        }
    }
    EXPECT_GT(refused, 0);
    std::cout << "Files that cannot be created: " << refused << "\n";
}

/** The library's own files fail as its functions do, with a result that nobody looks at. */
bool writesOwnFile(const CommandLine& line)
{
    return line.row->handler != doMonitor && line.row->handler != doMultVram && !printsSystemError(line);
}

TEST_F(SystemFaultTest, TellsOfAFileThatIsNotComplete)
{
    int full = 0;
    for (const CommandLine& line : linesOfEachKind()) {
        SCOPED_TRACE(line.text);
        const Traces whole = runWhole(line, writesToFile);
        for (const int error : {ENOSPC, EDQUOT, EFBIG, EIO}) {
            if (whole.run.matching.front() == 0) {
                continue;
            }
            ++full;
            const Traces seen = run(line, {{.matches = writesToFile, .error = error, .occurrence = 0}});
            expectEnd(seen);
            EXPECT_EQ(withoutTime(seen.run.output), withoutTime(whole.run.output));
            if (writesOwnFile(line)) {
                EXPECT_THAT(seen.run.error, HasSubstr("error: the file is not complete\n"));
            }
        }
    }
    EXPECT_GT(full, 0);
    std::cout << "Files without room: " << full << "\n";
}

/** The descriptor is closed all the same. */
TEST_F(SystemFaultTest, TellsOfAFileThatCannotBeClosed)
{
    int closed = 0;
    for (const CommandLine& line : linesOfEachKind()) {
        SCOPED_TRACE(line.text);
        const Traces whole = runWhole(line, ClosesWrittenFile());
        if (whole.run.matching.front() == 0 || !writesOwnFile(line)) {
            continue;
        }
        ++closed;
        const Traces seen = run(line, {{.matches = ClosesWrittenFile(), .error = EDQUOT, .occurrence = 0}});
        expectEnd(seen);
        EXPECT_EQ(seen.run.output, whole.run.output);
        EXPECT_THAT(seen.run.error, HasSubstr("error: the file is not complete\n"));
        EXPECT_EQ(seen.files, whole.files);
    }
    EXPECT_GT(closed, 0);
    std::cout << "Files that cannot be closed: " << closed << "\n";
}

/** The console at a terminal, with keys for the editor, for a number and for the end of the collector: a signal comes,
    or nothing has come yet at a terminal that does not let a read wait. */
TEST_F(SystemFaultTest, WaitsOnForKeysThatDoNotComeAtOnce)
{
    const TracedCommand command = {
        .arguments = {TOVIRA_UTIL_TOOL, "--card", "1"},
        .keys = {"monitor t\r", "5\r", "r", "rb 0\r", "\033", "[A", "\r", "monitor s\r", "x", "d", "quit\r"}};
    const auto waitsForKeys = [](const SystemCall& call) {
        return call.number == SYS_ppoll || (call.number == SYS_read && isOf(call, STDIN_FILENO));
    };
    const TracedRun whole = runWithFaults(command, {{.matches = waitsForKeys, .error = 0, .occurrence = -1}});
    EXPECT_EQ(whole.exitStatus, 0);
    EXPECT_THAT(whole.output, HasSubstr("please input 'd' to done the thread\n"));
    EXPECT_GT(whole.matching.front(), 20);
    for (const int error : {EINTR, EAGAIN}) {
        for (int number = 1; number <= whole.matching.front(); ++number) {
            const TracedRun seen =
                runWithFaults(command, {{.matches = waitsForKeys, .error = error, .occurrence = number}});
            SCOPED_TRACE(std::to_string(number) + ": " + strerror(error));
            EXPECT_FALSE(seen.timedOut);
            EXPECT_EQ(seen.exitStatus, 0);
            EXPECT_EQ(withoutTime(seen.output), withoutTime(whole.output));
        }
    }
}

/** Calls that fail for want of something, or because what is at the other end is broken. */
struct Want {
    const char* name;
    std::vector<std::uint64_t> numbers;
    int error;
    bool lasts = false;
};

std::function<bool(const SystemCall& call)> matcherOf(const Want& want)
{
    return [&want](const SystemCall& call) {
        return std::find(want.numbers.begin(), want.numbers.end(), call.number) != want.numbers.end();
    };
}

TEST_F(SystemFaultTest, EndsInOrderWhateverFails)
{
    std::vector<Want> wants = {
        {"input", {SYS_read, SYS_pread64}, EIO},
        {"facts", {SYS_newfstatat, SYS_fstat, SYS_lseek, SYS_fcntl, SYS_ioctl}, EIO},
        {"descriptors", {SYS_openat, SYS_open}, EMFILE},
        {"threads", {SYS_clone, SYS_clone3}, EAGAIN},
    };
    // A sanitizer takes memory of its own, and does without none.
    if (!TOVIRA_INSTRUMENTED) {
        wants.push_back({"memory", {SYS_mmap, SYS_brk, SYS_mremap}, ENOMEM, true});
    }
    int runs = 0;
    for (const CommandLine& line : linesOfEachKind()) {
        CallFaults counted;
        for (const Want& want : wants) {
            counted.push_back({.matches = matcherOf(want), .error = 0, .occurrence = -1});
        }
        const std::vector<int> calls = run(line, counted).run.matching;
        for (std::size_t i = 0; i < wants.size(); ++i) {
            SCOPED_TRACE(line.text + " without " + wants[i].name);
            for (int number = 1; number <= calls[i]; ++number) {
                const Traces seen = run(line, {{.matches = matcherOf(wants[i]),
                                                .error = wants[i].error,
                                                .occurrence = number,
                                                .lasts = wants[i].lasts}});
                ++runs;
                EXPECT_FALSE(seen.run.timedOut) << number;
                EXPECT_EQ(seen.run.signal, 0) << number << seen.run.error;
                EXPECT_TRUE(seen.run.exitStatus == 0 || seen.run.exitStatus == 1) << number;
            }
        }
    }
    std::cout << "Calls that fail: " << runs << "\n";
}

}  // namespace
}  // namespace faults_test
