#include "tovira_parse/options.h"

#include <getopt.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "captured_output.h"
#include "child_process.h"
#include "console_support.h"

namespace console_test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::StartsWith;

static_assert(sizeof(StartOptions::commandText) == 256);
static_assert(offsetof(StartOptions, commandText) == 0);
static_assert(offsetof(StartOptions, openResult) == 256);
static_assert(offsetof(StartOptions, interactive) == 260);

/** The usage text for a program called "tool". */
const std::string kUsage =
    "tool usage.\n"
    "eg:\n"
    "tool\n\texecute command if /dev/vekrw device exist!\n"
    "tool -i enter interactive command line.\n"
    "tool --cmd \"xxx xxx\" \n\t The cmdline requires DOUBLE QUOTATION MARKS.\n"
    "tool --mem reg_start,reg_size,vram_start,vram_size\n\tenter command line using /dev/vekrw device "
    "(root).\n\treg_start,reg_size,vram_start,vram_size are all in hex without 0x or space\n"
    "tool --tty ttyUSB0,9600\n\tenter command line using /dev/ttyUSB0,9600 device (root).\n\t baudrate is supported "
    "9600 19200 38400 115200 460800\n\tall addresses are in AMBA SPACE\n"
    "tool --card id to open card device.\n"
    "tool --gpu type to set device id.\n";

StartOptions freshOptions()
{
    return {.commandText = "", .openResult = 0, .interactive = 1};
}

using Arguments = std::vector<std::string>;

/** Hands the arguments, without the program's name, to the option parser. */
void parse(StartOptions& options, Arguments arguments)
{
    arguments.insert(arguments.begin(), "tool");
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    optind = 0;  // makes getopt start afresh
    options_parse_args(&options, static_cast<int>(arguments.size()), argv.data());
}

/** What parsing has left, for arguments that do not end the program. */
struct Parsed {
    StartOptions options = freshOptions();
    std::string output{};
    std::string error{};
};

Parsed parse(const Arguments& arguments)
{
    Parsed parsed;
    CapturedOutput output;
    CapturedError error;
    parse(parsed.options, arguments);
    parsed.output = output.take();
    parsed.error = error.take();
    return parsed;
}

/** What becomes of a process that parses the arguments; status 99 when parsing returns. */
child_process::Result parseInChild(const Arguments& arguments)
{
    return child_process::runForked([&arguments] {
        StartOptions options = freshOptions();
        parse(options, arguments);
        std::exit(99);  // NOLINT(concurrency-mt-unsafe): one thread
    });
}

class OptionsTest : public ConsoleTest
{
protected:
    OptionsTest() { set_card = 0; }
    ~OptionsTest() override { set_card = 0; }
    OptionsTest(const OptionsTest&) = delete;
    OptionsTest& operator=(const OptionsTest&) = delete;

    static void expectExit(const Arguments& arguments, int status, const std::string& output)
    {
        const child_process::Result result = parseInChild(arguments);
        EXPECT_EQ(result.exitStatus, status) << ::testing::PrintToString(arguments);
        EXPECT_EQ(result.output, output) << ::testing::PrintToString(arguments);
    }
};

TEST_F(OptionsTest, NoArgumentsChangeNothing)
{
    const Parsed parsed = parse(Arguments{});
    EXPECT_EQ(parsed.options.openResult, 0);
    EXPECT_EQ(parsed.options.interactive, 1);
    EXPECT_EQ(parsed.output, "");
    EXPECT_THAT(recording_vek::calls(), ElementsAre());
    StartOptions untouched = freshOptions();
    options_parse_args(&untouched, 0, nullptr);
    EXPECT_EQ(untouched.interactive, 1);
}

TEST_F(OptionsTest, UsageText)
{
    CapturedOutput output;
    progHelp("tool");
    EXPECT_EQ(output.take(), kUsage);
}

TEST_F(OptionsTest, UsageTextTakesTheProgramNameAsItIs)
{
    CapturedOutput output;
    progHelp("%s%n");
    EXPECT_THAT(output.take(), StartsWith("%s%n usage.\neg:\n%s%n\n\texecute command"));
}

TEST_F(OptionsTest, HelpEndsTheProgram)
{
    expectExit({"--help"}, 0, kUsage);
    expectExit({"-h", "x"}, 0, kUsage);
    expectExit({"-hx"}, 0, kUsage);
    expectExit({"--he"}, 0, kUsage);
    const auto result = child_process::runForked([] { doParseHelp("tool"); });
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, kUsage);
}

TEST_F(OptionsTest, UnknownOptionsEndTheProgram)
{
    for (const Arguments& arguments : {Arguments{"-i"},
                                       {"-d", "1"},
                                       {"-d"},
                                       {"-h"},
                                       {"-x"},
                                       {"--nothing"},
                                       {"--cmd"},
                                       {"--mem"},
                                       {"--tty"},
                                       {"--card"},
                                       {"--gpu"},
                                       {"-c"},
                                       {"-m"},
                                       {"-t"},
                                       {"-g"},
                                       {"--help=x"},
                                       {"--c=x"},
                                       {"-?"}}) {
        expectExit(arguments, 1, "Error: unknown option!\n");
    }
}

TEST_F(OptionsTest, ShortHelpWithoutAnArgumentIsReported)
{
    EXPECT_EQ(parseInChild({"-h"}).error, "tool: option requires an argument -- 'h'\n");
}

TEST_F(OptionsTest, OptionsActInTheirOrder)
{
    recording_vek::setResult("vekMemOpen", 1);
    const std::string memLine = "mem: reg_start=0x1 reg_size=0x2 vram_start=0x3 vram_size=0x4\n";
    expectExit({"--mem", "1,2,3,4", "--help", "--nothing"}, 0, memLine + kUsage);
    expectExit({"--mem", "1,2,3,4", "--nothing", "--help"}, 1, memLine + "Error: unknown option!\n");
    expectExit({"--help", "--mem", "1,2,3,4"}, 0, kUsage);
}

TEST_F(OptionsTest, OtherArgumentsAreIgnored)
{
    const Parsed parsed = parse({"word", "--cmd", "ver", "other"});
    EXPECT_STREQ(parsed.options.commandText, "ver");
    EXPECT_EQ(parsed.output + parsed.error, "");
    const Parsed ended = parse({"--cmd", "ver", "--", "--nothing", "--cmd", "info"});
    EXPECT_STREQ(ended.options.commandText, "ver");
    EXPECT_EQ(ended.output + ended.error, "");
}

class CommandOptionTest : public OptionsTest
{
};

TEST_F(CommandOptionTest, KeepsTheText)
{
    for (const Arguments& arguments : {Arguments{"--cmd", "Rrb 0; x"},
                                       {"--cmd=Rrb 0; x"},
                                       {"-c", "Rrb 0; x"},
                                       {"-cRrb 0; x"},
                                       {"--cm", "Rrb 0; x"}}) {
        const Parsed parsed = parse(arguments);
        EXPECT_STREQ(parsed.options.commandText, "Rrb 0; x");
        EXPECT_EQ(parsed.options.interactive, 0);
        EXPECT_EQ(parsed.options.openResult, 0);
        EXPECT_EQ(parsed.output + parsed.error, "");
    }
    EXPECT_THAT(recording_vek::calls(), ElementsAre());
}

TEST_F(CommandOptionTest, KeepsAnEmptyText)
{
    StartOptions options = freshOptions();
    std::memset(options.commandText, 'x', sizeof options.commandText);
    doParseCmd(&options, "");
    EXPECT_STREQ(options.commandText, "");
    EXPECT_EQ(options.interactive, 0);
}

TEST_F(CommandOptionTest, KeepsTheLastOfSeveralTexts)
{
    EXPECT_STREQ(parse({"--cmd", "a longer text", "--cmd", "short"}).options.commandText, "short");
}

TEST_F(CommandOptionTest, Keeps255Characters)
{
    const std::string text(255, 'x');
    StartOptions options = freshOptions();
    std::memset(options.commandText, 'y', sizeof options.commandText);
    doParseCmd(&options, text.c_str());
    EXPECT_EQ(std::string(options.commandText, 256), text + '\0');
    EXPECT_EQ(options.interactive, 0);
}

TEST_F(CommandOptionTest, StopsAt256Characters)
{
    for (const Arguments& arguments : {Arguments{"--cmd", std::string(256, 'x')}, {"-c", std::string(256, ' ')}}) {
        const child_process::Result result = parseInChild(arguments);
        EXPECT_EQ(result.signal, SIGABRT);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
    }
}

TEST_F(CommandOptionTest, RefusesLongerTexts)
{
    expectExit({"--cmd", std::string(257, 'x')}, 1, "Too long args!\n");
    expectExit({"--cmd", std::string(100000, 'x')}, 1, "Too long args!\n");
}

TEST_F(CommandOptionTest, InteractiveCanBeChosenAgain)
{
    StartOptions options = freshOptions();
    doParseCmd(&options, "ver");
    doParseInteractive(&options);
    EXPECT_EQ(options.interactive, 1);
}

class CardOptionTest : public OptionsTest
{
};

TEST_F(CardOptionTest, TakesTheSecondArgument)
{
    for (int card = 0; card < 4; ++card) {
        EXPECT_EQ(parse({"--card", std::to_string(card)}).output, "");
        EXPECT_EQ(set_card, card);
    }
    parse({"--ca", "0x1"});
    EXPECT_EQ(set_card, 1);
    EXPECT_THAT(recording_vek::calls(), ElementsAre());
}

TEST_F(CardOptionTest, OnlyTheSecondArgumentCounts)
{
    set_card = 3;
    EXPECT_EQ(parse({"--cmd", "ver", "--card", "2"}).output, "");
    EXPECT_EQ(set_card, 0);
    parse({"--cmd", "2", "--card", "1"});
    EXPECT_EQ(set_card, 2);
    parse({"--card", "1", "--card", "3"});
    EXPECT_EQ(set_card, 1);
    parse({"--card=1", "3"});
    EXPECT_EQ(set_card, 3);
}

TEST_F(CardOptionTest, MissingSecondArgumentIsCardZero)
{
    set_card = 3;
    EXPECT_EQ(parse(Arguments{"--card=1"}).output, "");
    EXPECT_EQ(set_card, 0);
}

TEST_F(CardOptionTest, RefusesOtherNumbersAndGoesOn)
{
    set_card = 2;
    for (const char* card : {"4", "5", "10", "ff", "ffffffff", "80000000", "80000001", "ffffffffffffffff"}) {
        const Parsed parsed = parse({"--card", card, "--cmd", "ver"});
        EXPECT_EQ(parsed.output, "Set card id is out of range\n") << card;
        EXPECT_EQ(set_card, 2) << card;
        EXPECT_STREQ(parsed.options.commandText, "ver") << card;
    }
}

class GpuOptionTest : public OptionsTest
{
};

TEST_F(GpuOptionTest, HandsTheTextToTheLibrary)
{
    for (const Arguments& arguments : {Arguments{"--gpu", "qZ202"}, {"--gpu=qZ202"}, {"-g", "qZ202"}, {"-gqZ202"}}) {
        const Parsed parsed = parse(arguments);
        EXPECT_EQ(parsed.output + parsed.error, "");
        EXPECT_EQ(parsed.options.openResult, 0);
        EXPECT_EQ(parsed.options.interactive, 1);
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("doGetDeviceId(\"tool\", \"qZ202\")"));
    }
}

TEST_F(GpuOptionTest, DoesNotLookAtTheResult)
{
    recording_vek::setResult("doGetDeviceId", -22);
    EXPECT_STREQ(parse({"--gpu", "", "--cmd", "ver"}).options.commandText, "ver");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("doGetDeviceId(\"tool\", \"\")"));
}

class MemoryOptionTest : public OptionsTest
{
};

struct MemoryRow {
    std::string text;
    std::string line;
    std::vector<std::string> calls;
};

TEST_F(MemoryOptionTest, ReadsFourHexadecimalNumbers)
{
    const std::vector<MemoryRow> rows = {
        {"1000,20,f0000000,40",
         "reg_start=0x1000 reg_size=0x20 vram_start=0xf0000000 vram_size=0x40",
         {"vekMemOpen(0x1000, 0x20, 0xf0000000, 0x40)"}},
        {"0x1A,0X2b,0x3C,0X4d",
         "reg_start=0x1a reg_size=0x2b vram_start=0x3c vram_size=0x4d",
         {"vekMemOpen(0x1a, 0x2b, 0x3c, 0x4d)"}},
        {"fedcba9876543210,ffffffffffffffff",
         "reg_start=0xfedcba9876543210 reg_size=0xffffffffffffffff "
         "vram_start=0x0 vram_size=0x0",
         {"vekMemOpen(0xfedcba9876543210, 0xffffffffffffffff, 0x0, 0x0)"}},
        {"10,20", "reg_start=0x10 reg_size=0x20 vram_start=0x0 vram_size=0x0", {"vekMemOpen(0x10, 0x20, 0x0, 0x0)"}},
        {"10,20,30",
         "reg_start=0x10 reg_size=0x20 vram_start=0x30 vram_size=0x0",
         {"vekMemOpen(0x10, 0x20, 0x30, 0x0)"}},
        {"0,0,30,40",
         "reg_start=0x0 reg_size=0x0 vram_start=0x30 vram_size=0x40",
         {"vekMemOpen(0x0, 0x0, 0x30, 0x40)"}},
        {"10,0,30,40",
         "reg_start=0x10 reg_size=0x0 vram_start=0x30 vram_size=0x40",
         {"vekMemOpen(0x10, 0x0, 0x30, 0x40)"}},
        {"0,20,30,40",
         "reg_start=0x0 reg_size=0x20 vram_start=0x30 vram_size=0x40",
         {"vekMemOpen(0x0, 0x20, 0x30, 0x40)"}},
        {"10,20,0,40,50",
         "reg_start=0x10 reg_size=0x20 vram_start=0x0 vram_size=0x40",
         {"vekMemOpen(0x10, 0x20, 0x0, 0x40)"}},
        {" 10, 20", "reg_start=0x10 reg_size=0x20 vram_start=0x0 vram_size=0x0", {"vekMemOpen(0x10, 0x20, 0x0, 0x0)"}},
        {"0,0,0,0", "reg_start=0x0 reg_size=0x0 vram_start=0x0 vram_size=0x0", {}},
        {"", "reg_start=0x0 reg_size=0x0 vram_start=0x0 vram_size=0x0", {}},
        {"zz", "reg_start=0x0 reg_size=0x0 vram_start=0x0 vram_size=0x0", {}},
        {"10", "reg_start=0x10 reg_size=0x0 vram_start=0x0 vram_size=0x0", {}},
        {"10 20", "reg_start=0x10 reg_size=0x0 vram_start=0x0 vram_size=0x0", {}},
        {"10 ,20", "reg_start=0x10 reg_size=0x0 vram_start=0x0 vram_size=0x0", {}},
        {"10,,30,40", "reg_start=0x10 reg_size=0x0 vram_start=0x0 vram_size=0x0", {}},
        {"10,0,30,0", "reg_start=0x10 reg_size=0x0 vram_start=0x30 vram_size=0x0", {}},
        {"0,20,0,40", "reg_start=0x0 reg_size=0x20 vram_start=0x0 vram_size=0x40", {}},
        {"10,0,0,40", "reg_start=0x10 reg_size=0x0 vram_start=0x0 vram_size=0x40", {}},
    };
    for (const MemoryRow& row : rows) {
        EXPECT_EQ(parse({"--mem", row.text}).output, "mem: " + row.line + "\n") << row.text;
        EXPECT_EQ(takeDeviceCalls(), row.calls) << row.text;
    }
}

TEST_F(MemoryOptionTest, StoresTheResultOfTheOpen)
{
    for (const int result : {0, 1, 77}) {
        recording_vek::setResult("vekMemOpen", result);
        EXPECT_EQ(parse({"--mem", "1,2,3,4"}).options.openResult, result);
        EXPECT_EQ(parse({"-m", "1,2,3,4"}).options.openResult, result);
        StartOptions options = freshOptions();
        CapturedOutput output;
        doParseMemOpen(&options, "tool", "1,2");
        EXPECT_EQ(options.openResult, result);
        EXPECT_EQ(options.interactive, 1);
    }
}

TEST_F(MemoryOptionTest, WithoutACompletePairTheResultIsTheArgumentCount)
{
    EXPECT_EQ(parse({"--mem", "0,0,0,0"}).options.openResult, 3);
    EXPECT_EQ(parse({"--mem=10,0,30,0", "--cmd", "ver"}).options.openResult, 4);
    recording_vek::setResult("vekSerialOpen", 77);
    EXPECT_EQ(parse({"--tty", "x", "--mem", "0"}).options.openResult, 5);
}

TEST_F(MemoryOptionTest, FailedOpenEndsTheProgram)
{
    recording_vek::setResult("vekMemOpen", -1);
    const std::string failure = "\nOpen /dev/mem device error\n" + kUsage;
    expectExit({"--mem", "1,2,3,4"}, 1, "mem: reg_start=0x1 reg_size=0x2 vram_start=0x3 vram_size=0x4" + failure);
    expectExit({"--mem", "0,0,3,4"}, 1, "mem: reg_start=0x0 reg_size=0x0 vram_start=0x3 vram_size=0x4" + failure);
    recording_vek::setResult("vekMemOpen", -12345);
    expectExit({"--mem", "1,2,0,0"}, 1, "mem: reg_start=0x1 reg_size=0x2 vram_start=0x0 vram_size=0x0" + failure);
}

class SerialOptionTest : public OptionsTest
{
protected:
    static std::vector<std::string> callsFor(const std::string& text)
    {
        EXPECT_EQ(parse({"--tty", text}).output, "") << text;
        return takeDeviceCalls();
    }
};

TEST_F(SerialOptionTest, TakesNameAndRate)
{
    EXPECT_THAT(callsFor("ttyUSB0,115200"), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", 115200)"));
    EXPECT_THAT(callsFor("ttyS1,9600"), ElementsAre("vekSerialOpen(\"/dev/ttyS1\", 9600)"));
    EXPECT_THAT(callsFor("a/b,460800"), ElementsAre("vekSerialOpen(\"/dev/a/b\", 460800)"));
    parse({"-t", "ttyUSB0,19200"});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", 19200)"));
}

TEST_F(SerialOptionTest, RateIs9600WhenThereIsNone)
{
    for (const char* text :
         {"ttyUSB0", "ttyUSB0,", "ttyUSB0,0", "ttyUSB0,abc", "ttyUSB0,,115200", "ttyUSB0,4294967296"}) {
        EXPECT_THAT(callsFor(text), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", 9600)")) << text;
    }
}

TEST_F(SerialOptionTest, RateIsHandedOnUnchecked)
{
    EXPECT_THAT(callsFor("ttyUSB0,12345"), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", 12345)"));
    EXPECT_THAT(callsFor("ttyUSB0,-1"), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", -1)"));
    EXPECT_THAT(callsFor("ttyUSB0, 38400"), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", 38400)"));
    EXPECT_THAT(callsFor("ttyUSB0,115200,8n1"), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", 115200)"));
    EXPECT_THAT(callsFor("ttyUSB0,0x10"), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", 9600)"));
    EXPECT_THAT(callsFor("ttyUSB0,010"), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", 10)"));
}

TEST_F(SerialOptionTest, RateIsCutTo32Bits)
{
    EXPECT_THAT(callsFor("ttyUSB0,4294967297"), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", 1)"));
    EXPECT_THAT(callsFor("ttyUSB0,2147483648"), ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", -2147483648)"));
}

TEST_F(SerialOptionTest, NameMayBeEmpty)
{
    EXPECT_THAT(callsFor(""), ElementsAre("vekSerialOpen(\"/dev/\", 9600)"));
    EXPECT_THAT(callsFor(",19200"), ElementsAre("vekSerialOpen(\"/dev/\", 19200)"));
}

TEST_F(SerialOptionTest, NameHasAtMost26Characters)
{
    const std::string name = "abcdefghijklmnopqrstuvwxyz";
    EXPECT_THAT(callsFor(name), ElementsAre("vekSerialOpen(\"/dev/" + name + "\", 9600)"));
    EXPECT_THAT(callsFor(name + "0"), ElementsAre("vekSerialOpen(\"/dev/" + name + "\", 9600)"));
    EXPECT_THAT(callsFor(name + std::string(10000, 'x')), ElementsAre("vekSerialOpen(\"/dev/" + name + "\", 9600)"));
    EXPECT_THAT(callsFor(name.substr(1) + ",19200"),
                ElementsAre("vekSerialOpen(\"/dev/" + name.substr(1) + "\", 19200)"));
}

TEST_F(SerialOptionTest, CommaBehindACutNameIsLookedForAtThe27thCharacterOnly)
{
    const std::string name = "abcdefghijklmnopqrstuvwxyz";
    EXPECT_THAT(callsFor(name + ",19200"), ElementsAre("vekSerialOpen(\"/dev/" + name + "\", 19200)"));
    EXPECT_THAT(callsFor(name + ","), ElementsAre("vekSerialOpen(\"/dev/" + name + "\", 9600)"));
    EXPECT_THAT(callsFor(name + "0,19200"), ElementsAre("vekSerialOpen(\"/dev/" + name + "\", 9600)"));
}

TEST_F(SerialOptionTest, StoresTheResultOfTheOpen)
{
    for (const int result : {0, 1, 77}) {
        recording_vek::setResult("vekSerialOpen", result);
        EXPECT_EQ(parse({"--tty", "ttyUSB0"}).options.openResult, result);
    }
}

TEST_F(SerialOptionTest, LaterOpenReplacesTheResultOfAnEarlierOne)
{
    recording_vek::setResult("vekSerialOpen", 5);
    recording_vek::setResult("vekMemOpen", 0);
    EXPECT_EQ(parse({"--tty", "x", "--mem", "1,2"}).options.openResult, 0);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSerialOpen(\"/dev/x\", 9600)", "vekMemOpen(0x1, 0x2, 0x0, 0x0)"));
    EXPECT_EQ(parse({"--mem", "1,2", "--tty", "x"}).options.openResult, 5);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekMemOpen(0x1, 0x2, 0x0, 0x0)", "vekSerialOpen(\"/dev/x\", 9600)"));
}

TEST_F(SerialOptionTest, FailedOpenEndsTheProgram)
{
    recording_vek::setResult("vekSerialOpen", -1);
    expectExit({"--tty", "ttyUSB0,19200"}, 1, "Open /dev/ttyUSB0 device error\n" + kUsage);
    recording_vek::setResult("vekSerialOpen", -110);
    expectExit({"--tty", "%s%n"}, 1, "Open /dev/%s%n device error\n" + kUsage);
}

}  // namespace
}  // namespace console_test
