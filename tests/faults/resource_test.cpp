// The finished program, on the simulated card, with files and streams that are not what they should be.

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "child_process.h"
#include "command_lines.h"
#include "console_support.h"
#include "observation.h"
#include "syscall_faults.h"
#include "tovira_parse/handlers.h"

namespace faults_test
{
namespace
{

using child_process::Result;
using console_test::FolderTest;
using console_test::readFile;
using console_test::writeFile;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience{20};

const std::string kStartLine = "enter command line with /dev/vekrw for QZ201!\n";

/** Runs a shell script in the current folder; "$0" is the program, "$1" the argument. */
Result runScript(const std::string& script, const std::string& argument = "", const std::string& input = "")
{
    return child_process::run(
        {.arguments = {"/bin/sh", "-c", script, TOVIRA_UTIL_TOOL, argument}, .input = input, .timeout = kPatience});
}

Result runLine(const std::string& line, const std::string& input = "")
{
    return child_process::run({.arguments = {TOVIRA_UTIL_TOOL, "--cmd", line}, .input = input, .timeout = kPatience});
}

void expectEnd(const Result& result)
{
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.exitStatus, 0);
}

/** Whether a line ends by itself whatever it is given to read; the display of `info` does not. */
bool endsByItself(const CommandLine& line)
{
    return line.row->name != std::string("info");
}

std::vector<CommandLine> linesOfEachHandler()
{
    std::vector<CommandLine> lines;
    std::set<CmdHandler> taken;
    for (const CommandLine& line : commandLines()) {
        if (endsByItself(line) && taken.insert(line.row->handler).second) {
            lines.push_back(line);
        }
    }
    return lines;
}

// ---- Files

/** Something that has the name of a file. */
struct Oddity {
    const char* name;
    void (*create)(const char* path);
};

void createFifo(const char* path)
{
    ASSERT_EQ(mkfifo(path, 0600), 0);
}

/** One with a reader and a writer, which stay as long as this program: nobody has to wait to open it. */
void createFifoInUse(const char* path)
{
    createFifo(path);
    ASSERT_GE(open(path, O_RDWR | O_CLOEXEC), 0);
}

void createFolder(const char* path)
{
    fs::create_directory(path);
}

void createSocket(const char* path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(socket);
}

void createLoop(const char* path)
{
    fs::create_symlink(path, path);
}

void createDanglingLink(const char* path)
{
    fs::create_symlink("nowhere/at/all", path);
}

constexpr Oddity kOddities[] = {{"Fifo", createFifo},     {"FifoInUse", createFifoInUse},
                                {"Folder", createFolder}, {"Socket", createSocket},
                                {"Loop", createLoop},     {"DanglingLink", createDanglingLink}};

class OddFileTest : public FolderTest, public testing::WithParamInterface<Oddity>
{
};

TEST_P(OddFileTest, IsNotReadFrom)
{
    GetParam().create("file");
    GetParam().create("FILE");
    for (const char* line : {"load file", "run file", "edid parse file", "spi program 0 file", "vwls 0 4 file"}) {
        const Result result = runLine(line);
        SCOPED_TRACE(line);
        expectEnd(result);
        EXPECT_THAT(result.output, StartsWith(kStartLine));
    }
    EXPECT_THAT(runLine("load file;ver").error, StartsWith("Open file failed: "));
    EXPECT_EQ(runLine("load file;ver").output, kStartLine) << "the console has ended";
    EXPECT_EQ(runLine("spi program 0 file;ver").output, runLine("ver").output);
}

TEST_P(OddFileTest, IsNotWrittenTo)
{
    GetParam().create("file");
    GetParam().create("FILE");
    for (const char* line : {"rrbs 10 4 file", "rrqs 10 4 file", "crbs 10 4 file"}) {
        const Result result = runLine(line);
        SCOPED_TRACE(line);
        expectEnd(result);
        EXPECT_EQ(result.output, kStartLine + "Open FILE error\n" + std::string(console_test::kBadCommandLine));
    }
    for (const char* line :
         {"vrbs 10 4", "vrls 10 4", "arbs 10 4", "ddc 0", "spi read 0 10", "i2c set 0 50;i2c rbs 0 4"}) {
        const Result result = runLine(std::string(line) + " file");
        SCOPED_TRACE(line);
        expectEnd(result);
        EXPECT_EQ(result.error, "");
        if (line != std::string("vrls 10 4")) {
            EXPECT_EQ(result.output, runLine(line).output);
        }
    }
    GetParam().create("axiMonitorData");
    expectEnd(runLine("monitor start"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, OddFileTest, testing::ValuesIn(kOddities),
                         [](const testing::TestParamInfo<Oddity>& kind) { return std::string(kind.param.name); });

class ResourceTest : public FolderTest
{
};

/** Cuts a file short just before a read of it, when its size has been looked at already. */
TEST_F(ResourceTest, BearsAFileThatShrinksWhileItIsRead)
{
    if (!canTrace()) {
        GTEST_SKIP() << "no process can be traced here";
    }
    for (const std::string line :
         {"load file", "run file", "edid parse file", "spi program 0 file;spi read 0 8", "vwls 0 4 file;vrls 0 4"}) {
        for (const off_t left : {off_t{0}, off_t{5}}) {
            SCOPED_TRACE(line);
            for (const char* name : {"file", "FILE"}) {
                writeFile(name, "rrb 0\nrrb 4\nrrb 8\nrrb c\n");
            }
            const auto cutShort = [left](const SystemCall& call) {
                const bool cuts = call.number == SYS_read && call.arguments[0] > STDERR_FILENO;
                if (cuts) {
                    EXPECT_EQ(truncate("file", left) + truncate("FILE", left), 0);
                }
                return cuts;
            };
            const TracedRun run = runWithFaults({.arguments = {TOVIRA_UTIL_TOOL, "--cmd", line}},
                                                {{.matches = cutShort, .error = 0, .occurrence = -1}});
            EXPECT_FALSE(run.timedOut);
            EXPECT_EQ(run.signal, 0);
            EXPECT_EQ(run.exitStatus, 0);
            EXPECT_GT(run.matching.front(), 0);
            if (line.starts_with("spi")) {
                EXPECT_THAT(run.output, HasSubstr("00000000: ff ff ff ff ff ff ff ff ")) << "nothing is programmed";
            } else if (line == "load file" && left == 5) {
                EXPECT_EQ(run.output, kStartLine + "rrb 0:\n00000000: 00\n");
            }
        }
    }
}

TEST_F(ResourceTest, TellsOfAFullFileSystem)
{
    const Result result = runScript(
        "mkdir full && unshare -m sh -c '"
        "mount -t tmpfs -o size=16k none full 2>/dev/null || exit 77\n"
        "cd full && head -c 12288 /dev/zero > filling\n"
        "for line in \"rrbs 0 4000 saved\" \"vrbs 0 4000 saved\" \"arbs 0 4000 SAVED\" \"spi read 0 4000 SAVED\"; do\n"
        "  \"$0\" --cmd \"$line\" >/dev/null || exit 1; rm SAVED\n"
        "done\n"
        "\"$0\" --cmd \"vrls 0 1000 saved;monitor start\" >/dev/null || exit 2\n"
        "mount -o remount,ro full . 2>/dev/null || mount -o remount,ro none . || exit 3\n"
        "\"$0\" --cmd \"rrbs 0 4 saved\" && \"$0\" --cmd \"vrbs 0 4 saved\"' \"$0\"");
    if (result.exitStatus != 0 && result.output.empty()) {
        GTEST_SKIP() << "no file system can be mounted here: " << result.exitStatus << result.error;
    }
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error,
              "Write SAVED error: the file is not complete\nWrite SAVED error: the file is not complete\n"
              "Write SAVED error: the file is not complete\nWrite SAVED error: the file is not complete\n");
    EXPECT_EQ(result.output, kStartLine + "Open SAVED error\n" + std::string(console_test::kBadCommandLine) +
                                 runLine("vrbs 0 4").output);
}

TEST_F(ResourceTest, TellsOfAFileAtTheLimitOfItsSize)
{
    const Result result = runScript("ulimit -f 1; exec \"$0\" --cmd 'vrbs 0 4000 saved' 2>error | tail -c 1");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "\n");
    EXPECT_EQ(readFile("error"), "Write SAVED error: the file is not complete\n");
}

// ---- Standard streams

TEST_F(ResourceTest, RunsEveryCommandWithoutStandardStreams)
{
    writeInputFiles();
    for (const CommandLine& line : linesOfEachHandler()) {
        SCOPED_TRACE(line.text);
        expectEnd(runScript("exec \"$0\" --cmd \"$1\" <&- >&- 2>&-", line.text));
        expectEnd(runScript("exec \"$0\" --cmd \"$1\" </dev/null >/dev/full", line.text));
    }
    EXPECT_THAT(readFile("script"), StartsWith("rrb")) << "no file takes the place of a stream";
}

/** The first file that is opened would get the number of a closed stream, and what is printed. */
TEST_F(ResourceTest, PrintsIntoNoFileInThePlaceOfAStream)
{
    const std::string line = "rrbs 0 8000 saved";
    expectEnd(runLine(line));
    const std::string whole = readFile("SAVED");
    EXPECT_EQ(whole.size(), 0x8000U);
    for (const char* closed : {"<&-", ">&-", "2>&-", "<&- >&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
        SCOPED_TRACE(closed);
        expectEnd(runScript("exec \"$0\" --cmd \"$1\" " + std::string(closed), line));
        EXPECT_TRUE(readFile("SAVED") == whole);
    }
}

TEST_F(ResourceTest, PrintsIntoNoFileWhereThereAreNoDevices)
{
    const std::string line = "rrbs 0 8000 saved";
    expectEnd(runLine(line));
    const std::string whole = readFile("SAVED");
    fs::remove("SAVED");
    const Result result = runScript(
        "exec unshare -m sh -c 'mount -t tmpfs none /dev || exit 77; exec \"$0\" --cmd \"$1\" <&- >&- 2>&-' \"$0\" "
        "\"$1\"",
        line);
    if (result.exitStatus != 0 && !fs::exists("SAVED")) {
        GTEST_SKIP() << "no file system can be mounted here: " << result.exitStatus << result.error;
    }
    expectEnd(result);
    EXPECT_TRUE(readFile("SAVED") == whole);
}

TEST_F(ResourceTest, EndsTheDisplayThatNobodyCanSee)
{
    for (const char* script :
         {"exec \"$0\" --cmd info </dev/null >&-", "exec \"$0\" --cmd info </dev/null >/dev/full",
          "mkfifo pipe; : <pipe & exec 3>pipe; wait; trap '' PIPE; exec \"$0\" --cmd info </dev/null >&3"}) {
        SCOPED_TRACE(script);
        expectEnd(runScript(script));
    }
}

TEST_F(ResourceTest, EndsByTheSignalOfABrokenPipe)
{
    for (const char* line : {"help;help;help", "info", "vrbs 0 8000", "mcu aux r 0;rrbs 0 4000"}) {
        SCOPED_TRACE(line);
        // A reader that has come and gone.
        const Result result = runScript(
            "rm -f pipe; mkfifo pipe; : <pipe & exec 3>pipe; wait; exec \"$0\" --cmd \"$1\" </dev/null >&3", line);
        EXPECT_FALSE(result.timedOut);
        EXPECT_EQ(result.signal, SIGPIPE);
    }
}

/** What C stdio is about to write would be lost in an interrupted write; none is, whatever stops the program. */
TEST_F(ResourceTest, KeepsItsOutputWhenItIsStoppedAndContinued)
{
    const std::string expected = runLine("rrbs 0 20000").output;
    const Result result = runScript(
        "mkfifo pipe; \"$0\" --cmd 'rrbs 0 20000' >pipe & program=$!; cat pipe >seen & reader=$!\n"
        "while kill -STOP $program 2>/dev/null; do kill -CONT $program; done; wait $program; wait $reader");
    expectEnd(result);
    EXPECT_TRUE(readFile("seen") == expected);
}

TEST_F(ResourceTest, EndsTheConsoleWhoseInputHasEnded)
{
    for (const char* script : {"exec \"$0\" <&-", "exec \"$0\" </dev/null", "exec \"$0\" <&- >&- 2>&-"}) {
        SCOPED_TRACE(script);
        const Result result = runScript(script);
        expectEnd(result);
        EXPECT_LT(result.output.size(), 4096U);
    }
}

TEST_F(ResourceTest, TakesAnEndedInputForNoNumberAndNoKey)
{
    for (const char* input : {"", "\n", "zz\n"}) {
        const Result result = runLine("monitor t", input);
        expectEnd(result);
        EXPECT_EQ(result.output, kStartLine + "Please input AXI clock cycle\ntime: 0\n");
    }
    const Result collected = child_process::run(
        {.arguments = {TOVIRA_UTIL_TOOL, "--card", "1", "--cmd", "monitor start"}, .timeout = kPatience});
    expectEnd(collected);
    EXPECT_THAT(collected.output, EndsWith("please check the axiMonitorData file\n"));
}

/** A display that no key can end waits between two drawings. */
TEST_F(ResourceTest, DrawsTheDisplayAtItsPaceWhenTheInputHasEnded)
{
    if (!canTrace()) {
        GTEST_SKIP() << "no process can be traced here";
    }
    const auto waits = [](const SystemCall& call) {
        return call.number == SYS_clock_nanosleep || call.number == SYS_nanosleep;
    };
    const auto draws = [](const SystemCall& call) {
        return call.number == SYS_write && call.arguments[0] == STDOUT_FILENO;
    };
    const TracedRun run = runWithFaults(
        {.arguments = {TOVIRA_UTIL_TOOL, "--cmd", "info"}},
        {{.matches = waits, .error = 0, .occurrence = 0}, {.matches = draws, .error = EIO, .occurrence = 12}});
    EXPECT_FALSE(run.timedOut);
    EXPECT_EQ(run.exitStatus, 0);
    // The title is drawn on its own, and the drawing that fails is the last one.
    EXPECT_EQ(run.matching.front(), 10);
}

// ---- Bytes

TEST_F(ResourceTest, LoadsALineOfTenMegabytes)
{
    constexpr std::size_t kLong = 10'000'000;
    const std::string line(kLong, 'x');
    writeFile("script", line);
    const Result alone = runLine("load script");
    expectEnd(alone);
    EXPECT_EQ(alone.output.size(), kStartLine.size() + kLong + 2);
    EXPECT_TRUE(alone.output == kStartLine + line + ":\n");

    // The first piece's length is what is run of every piece.
    writeFile("script", "rrb 0\n" + line + "\nrrb 4\n");
    const Result among = runLine("load script");
    expectEnd(among);
    EXPECT_TRUE(among.output == kStartLine + "rrb 0:\n00000000: 00\n" + line + ":\n" + "rrb 4:\n00000004: 00\n");

    writeFile("script", line + "\nrrb 0\n");
    const Result first = runLine("load script");
    expectEnd(first);
    EXPECT_THAT(first.output, EndsWith("x:\nrrb 0:\n00000000: 00\n"));
}

TEST_F(ResourceTest, PassesOverTenMegabytesOnAPipe)
{
    const Result console = runScript("head -c 10000000 /dev/zero | tr '\\0' x | \"$0\" | tail -c 100");
    EXPECT_FALSE(console.timedOut);
    EXPECT_EQ(console.exitStatus, 0);
    const Result cycle = runScript("head -c 10000000 /dev/zero | tr '\\0' 1 | \"$0\" --cmd 'monitor t' | tail -n 1");
    EXPECT_FALSE(cycle.timedOut);
    EXPECT_THAT(cycle.output, StartsWith("time: "));
}

TEST_F(ResourceTest, BearsNulBytesWhereverBytesAreRead)
{
    const std::string nuls(5000, '\0');
    const std::string mixed = std::string("rrb 0\n\0rrb 4\n", 13) + nuls;
    for (const std::string& contents : {nuls, mixed, std::string("rrb 0\0;rrb 4\n", 13)}) {
        writeFile("file", contents);
        writeFile("FILE", contents);
        for (const char* line : {"load file", "run file", "edid parse file", "vwls 0 4 file", "spi program 0 file"}) {
            SCOPED_TRACE(line);
            expectEnd(runLine(line));
        }
        expectEnd(runLine("monitor t", contents));
    }
    expectEnd(runLine("info", std::string("\0q", 2)));
    writeFile("file", mixed);
    EXPECT_EQ(runLine("load file").output, kStartLine + "rrb 0:\n00000000: 00\n") << "a text ends at a NUL";
    writeFile("file", std::string("\0\1\2\3\0\5\6\7", 8));
    EXPECT_THAT(runLine("spi erase 0 1000;spi program 0 file;spi read 0 8").output,
                HasSubstr("00000000: 00 01 02 03 00 05 06 07 "))
        << "an image may hold any byte";
}

// ---- Opening and closing the connection, which no command does

struct StartUp {
    const char* function;
    std::vector<std::string> options;
    std::string failure;
};

TEST_F(ResourceTest, TellsOfAConnectionThatFails)
{
    const std::vector<StartUp> starts = {
        {"vekRwOpen", {}, "Open /dev/tovira device error\n"},
        {"vekMemOpen", {"--mem", "1000,1000,2000,1000"}, "Open /dev/mem device error\n"},
        {"vekSerialOpen", {"--tty", "ttyX,9600"}, "Open /dev/ttyX device error\n"},
        {"doGetDeviceId", {"--gpu", "nonsense"}, ""},
        {"vekClose", {}, ""},
    };
    for (const StartUp& start : starts) {
        for (const char* result : {"-5", "-2147483648", "2147483647"}) {
            SCOPED_TRACE(std::string(start.function) + " = " + result);
            std::vector<std::string> arguments = {TOVIRA_UTIL_TOOL};
            arguments.insert(arguments.end(), start.options.begin(), start.options.end());
            arguments.insert(arguments.end(), {"--cmd", "rrb 0"});
            const Result run =
                child_process::run({.arguments = arguments,
                                    .environment = {{"LD_LIBRARY_PATH", TOVIRA_FOREIGN_LIBRARY_FOLDER},
                                                    {std::string("RECORDING_VEK_RESULT_") + start.function, result}},
                                    .timeout = kPatience});
            const bool fails = !start.failure.empty() && result[0] == '-';
            EXPECT_EQ(run.signal, 0);
            EXPECT_EQ(run.exitStatus, fails ? 1 : 0);
            if (fails) {
                EXPECT_THAT(run.output, HasSubstr(start.failure + TOVIRA_UTIL_TOOL + " usage.\n"));
            } else {
                EXPECT_THAT(run.output, EndsWith("00000000: 00\n"));
            }
        }
    }
}

}  // namespace
}  // namespace faults_test
