// Every function of the device-access library fails in every command that uses it.
//
// The lines are made from the command table. Each runs with a library that does what it is asked for; then once more
// for every function that it called, for its first, second and last call and for each way of failing.

#include <algorithm>
#include <array>
#include <climits>
#include <iostream>
#include <iterator>
#include <map>
#include <set>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "command_lines.h"
#include "console_support.h"
#include "declared_functions.h"
#include "observation.h"
#include "tovira_parse/command_table.h"

namespace faults_test
{
namespace
{

using console_test::FolderTest;
using recording_vek::Delivery;

struct Figures : testing::Environment {
    void TearDown() override
    {
        if (runs > 0) {
            std::cout << "Library faults: " << functions.size() << " functions, " << lines << " command lines, " << runs
                      << " runs\n";
        }
    }

    std::set<std::string> functions{};
    int lines = 0;
    int runs = 0;
};

Figures& figures()
{
    static auto* const figures = new Figures;
    return *figures;
}

/** Functions that only opening and closing the connection needs, which is no command's business. */
const std::set<std::string>& functionsOfNoCommand()
{
    static const std::set<std::string> names = {"vekRwOpen", "vekMemOpen", "vekSerialOpen", "vekClose",
                                                "doGetDeviceId"};
    return names;
}

/** Functions that answer with a text, which may be missing. */
bool answersText(const std::string& function)
{
    return function == "vekI2cErrString" || function == "vekPowerStateName";
}

/** The collector is a thread's function; it has no result. */
bool hasResult(const std::string& function)
{
    return !answersText(function) && function != "vek_thread_qz202monitor";
}

/** Functions whose answer is their result. */
bool answersValue(const std::string& function)
{
    static const std::set<std::string> names = {"get_s_type", "get_device_id", "vekGetCard", "vek_qz200_get_freq"};
    return names.contains(function);
}

/** The calls of a function that fail, out of its calls in a run. */
std::set<int> failingCalls(int calls)
{
    return {1, std::min(2, calls), calls};
}

/** The ways of failing: each status that the dispatcher has a message for, 1, which ends the console, and others. */
constexpr std::array kEveryFailure = {-1, -2, -3, -5, -22, INT_MIN, 1, INT_MAX};

/** For what has been failed in every way already, if at another call or before a repeat. */
constexpr std::array kSomeFailures = {-5, INT_MAX};

std::map<std::string, int> callCounts(const Observation& seen)
{
    std::map<std::string, int> counts;
    for (const std::string& call : seen.calls) {
        ++counts[functionOf(call)];
    }
    return counts;
}

std::size_t indexOfCall(const Observation& seen, const std::string& function, int number)
{
    for (std::size_t i = 0; i < seen.calls.size(); ++i) {
        if (functionOf(seen.calls[i]) == function && --number == 0) {
            return i;
        }
    }
    return seen.calls.size();
}

std::string printedFrom(const Observation& seen, std::size_t call)
{
    return call < seen.printedBefore.size() ? seen.output.substr(seen.printedBefore[call]) : "";
}

std::string replaced(std::string text, const std::string& what, const std::string& with)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

const Failure* failureFor(const CommandLine& line, const Fault& fault)
{
    const auto matches = [&fault](const Failure& failure) {
        const bool delivered = fault.delivery == Delivery::kAlways;
        const bool fails = failure.failing == Failing::kNegative ? fault.result < 0 : fault.result != 0;
        return failure.function == fault.function && fails && failure.result.value_or(fault.result) == fault.result &&
               failure.call.value_or(fault.call) == fault.call && failure.delivered.value_or(delivered) == delivered;
    };
    const std::vector<Failure>& failures = line.example->failures;
    const auto found = std::find_if(failures.begin(), failures.end(), matches);
    return found == failures.end() ? nullptr : &*found;
}

std::vector<std::string> namesIn(const std::vector<std::string>& calls, std::size_t first)
{
    std::vector<std::string> names;
    for (std::size_t i = first; i < calls.size(); ++i) {
        names.push_back(functionOf(calls[i]));
    }
    return names;
}

std::vector<std::string> words(std::string_view text)
{
    std::istringstream stream{std::string(text)};
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string dispatcherMessage(int status)
{
    switch (status) {
        case kStatusBadCommand:
            return std::string(console_test::kBadCommandLine);
        case kStatusBadArgument:
            return std::string(console_test::kBadArgumentLine);
        case kStatusModeRefused:
            return std::string(console_test::kModeRefusedLine);
        default:
            return "";
    }
}

/** The lines of one row. */
class FunctionFaultTest : public FolderTest, public testing::WithParamInterface<int>
{
protected:
    FunctionFaultTest() { writeInputFiles(); }

    static const UtilCmd& row() { return g_util_cmd[static_cast<std::size_t>(GetParam())]; }

    /** Runs a line twice, over memory full of one byte and of another: what differs comes from what nobody has set. */
    static Observation observeTwice(const CommandLine& line, const Conditions& conditions, const Fault& fault)
    {
        const Observation seen = observe(line, conditions, fault);
        Conditions others = conditions;
        others.poison = 0x5a;
        EXPECT_EQ(observe(line, others, fault), seen) << "something uninitialised shows";
        figures().runs += 2;
        return seen;
    }

    static void checkFailure(const Observation& seen, const Observation& base, const Failure& failure,
                             const Fault& fault)
    {
        const std::string result = std::to_string(fault.result);
        const std::string text =
            replaced(replaced(std::string(failure.text), "{}", result), "{n}", std::to_string(fault.call - 1));
        const std::size_t failed = indexOfCall(base, fault.function, fault.call);
        const std::string before = base.output.substr(0, base.printedBefore[failed]);
        switch (failure.sequel) {
            case Sequel::kEnds:
                EXPECT_EQ(seen.output, before + text);
                EXPECT_EQ(seen.status, failure.status);
                EXPECT_EQ(namesIn(seen.calls, failed + 1), words(failure.then));
                EXPECT_FALSE(seen.saved) << "a file is written of what was not read";
                break;
            case Sequel::kGoesOn:
                EXPECT_EQ(seen.output, before + text + printedFrom(base, failed + 1));
                EXPECT_EQ(seen.status, failure.status);
                EXPECT_EQ(namesIn(seen.calls, 0), namesIn(base.calls, 0));
                break;
            case Sequel::kSkips: {
                const std::size_t next = indexOfCall(base, fault.function, fault.call + 1);
                EXPECT_EQ(seen.output, before + text + printedFrom(base, next));
                EXPECT_EQ(seen.status, failure.status);
                EXPECT_EQ(namesIn(seen.calls, failed + 1), namesIn(base.calls, next));
                break;
            }
            case Sequel::kShowsAnswer:
                EXPECT_EQ(seen.output, replaced(base.output, std::to_string(clockAnswer(base.calls[failed])), result));
                EXPECT_EQ(seen.status, kStatusDone);
                EXPECT_EQ(seen.calls, base.calls);
                break;
            case Sequel::kReturnsIt:
                EXPECT_EQ(seen.output, before);
                EXPECT_EQ(seen.status, fault.result);
                EXPECT_EQ(seen.calls, base.calls);
                break;
        }
        EXPECT_EQ(seen.error, base.error);
    }

    /** A result that nobody looks at: what counts are the outputs, and those that do not come are 0. */
    static void checkNotLookedAt(const CommandLine& line, const Conditions& conditions, const Observation& seen,
                                 const Observation& base, const Fault& fault)
    {
        if (fault.delivery == Delivery::kAlways) {
            EXPECT_EQ(seen, base);
        } else if (fault.result != 0) {
            Fault undelivered = fault;
            undelivered.result = 0;
            EXPECT_EQ(seen, observe(line, conditions, undelivered));
        }
    }

    static void checkByDispatcher(const CommandLine& line, const Observation& seen, const Fault& fault)
    {
        if (fault.function == "get_s_type" || fault.function == "get_device_id") {
            return;
        }
        Conditions conditions;
        conditions.runner = Runner::kDispatcher;
        const Observation dispatched = observe(line, conditions, fault);
        ++figures().runs;
        const bool returned = seen.status == kStatusQuit || (seen.status < 0 && seen.status >= kStatusModeRefused);
        EXPECT_EQ(dispatched.status, returned ? seen.status : kStatusDone);
        EXPECT_EQ(dispatched.output, seen.output + dispatcherMessage(seen.status));
    }

    /** @param base what is seen under the same conditions while nothing fails */
    static void failCall(const CommandLine& line, const Conditions& conditions, const Observation& base,
                         const std::string& function, int call, std::span<const int> results)
    {
        for (const int result : results) {
            for (const Delivery delivery : {Delivery::kNever, Delivery::kAlways}) {
                const Fault fault{function, call, result, delivery};
                std::ostringstream trace;
                trace << line.text << ": " << fault;
                SCOPED_TRACE(trace.str());
                const Observation seen = observeTwice(line, conditions, fault);
                if (const Failure* const failure = failureFor(line, fault)) {
                    checkFailure(seen, base, *failure, fault);
                } else {
                    checkNotLookedAt(line, conditions, seen, base, fault);
                }
                if (conditions.runner == Runner::kHandler) {
                    checkByDispatcher(line, seen, fault);
                }
            }
        }
    }

    /** A success that leaves its outputs as they are shows, in their place, what is shown of zeros. */
    static void keepOutputs(const CommandLine& line, const std::string& function, int call)
    {
        const Fault fault{function, call, 0, Delivery::kNever};
        std::ostringstream trace;
        trace << line.text << ": " << fault;
        SCOPED_TRACE(trace.str());
        observeTwice(line, {}, fault);
        if (!line.family->waitsForAnswers) {
            Conditions zeros;
            zeros.answers = Answers::kZero;
            EXPECT_EQ(observeTwice(line, zeros, fault), observe(line, zeros));
        }
    }

    static void withholdText(const CommandLine& line, const Observation& base, const std::string& function)
    {
        SCOPED_TRACE(line.text + ": no text of " + function);
        const Observation seen = observeTwice(line, {}, {.function = function, .nullText = true});
        const std::string number = function == "vekI2cErrString" ? "error -121" : "state ";
        const std::size_t at = base.output.find(number);
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(seen.output, base.output.substr(0, at) + "unknown\n");
        EXPECT_EQ(seen.status, base.status);
        EXPECT_EQ(seen.calls, base.calls);
    }

    static void failFunction(const CommandLine& line, const Observation& base, const std::string& function, int calls)
    {
        figures().functions.insert(function);
        if (answersText(function)) {
            withholdText(line, base, function);
        } else if (hasResult(function) && function != line.example->failed) {
            for (const int call : failingCalls(calls)) {
                const std::span<const int> results =
                    call == 1 ? std::span<const int>(kEveryFailure) : std::span<const int>(kSomeFailures);
                failCall(line, {}, base, function, call, results);
                if (!answersValue(function)) {
                    keepOutputs(line, function, call);
                }
            }
        }
    }

    /** Fails the functions of a line that is run again. */
    static void failRepeated(const CommandLine& line)
    {
        SCOPED_TRACE("repeated");
        Conditions repeated;
        repeated.runner = Runner::kRepeat;
        const Observation base = observe(line, repeated);
        for (const auto& [function, calls] : callCounts(base)) {
            if (hasResult(function) && function != line.example->failed) {
                failCall(line, repeated, base, function, 1, kSomeFailures);
            }
        }
    }
};

TEST_P(FunctionFaultTest, GivesTheDocumentedTextAndStatus)
{
    for (const CommandLine& line : commandLines()) {
        if (line.row != &row()) {
            continue;
        }
        ++figures().lines;
        const Observation base = observe(line);
        for (const auto& [function, calls] : callCounts(base)) {
            failFunction(line, base, function, calls);
        }
        if (line.row->repeat == 1) {
            failRepeated(line);
        }
    }
}

TEST_P(FunctionFaultTest, EndsWhenNothingWorks)
{
    for (const CommandLine& line : commandLines()) {
        // A board that answers nothing is waited for, and so is an end of the display that nothing fails in.
        if (line.row != &row() || line.family->waitsForAnswers) {
            continue;
        }
        for (const auto& [function, calls] : callCounts(observe(line))) {
            if (hasResult(function)) {
                const Fault fault{function, 0, -5};
                SCOPED_TRACE(line.text + ": " + function);
                observeTwice(line, {}, fault);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, FunctionFaultTest, testing::Range(0, static_cast<int>(g_util_cmd.size())),
                         [](const testing::TestParamInfo<int>& row) {
                             const std::string name = namesOf(g_util_cmd[static_cast<std::size_t>(row.param)]).front();
                             return std::to_string(row.param) + "_" + name;
                         });

class CommandLinesTest : public FolderTest
{
protected:
    CommandLinesTest() { writeInputFiles(); }
};

TEST_F(CommandLinesTest, HoldEveryNameOfEveryRow)
{
    for (const UtilCmd& row : g_util_cmd) {
        for (const std::string& name : namesOf(row)) {
            EXPECT_TRUE(std::any_of(commandLines().begin(), commandLines().end(), [&](const CommandLine& line) {
                return line.row == &row && line.text.substr(0, line.text.find(' ')) == name;
            })) << name;
        }
    }
}

TEST_F(CommandLinesTest, CallEveryFunctionThatACommandUses)
{
    std::set<std::string> called;
    for (const CommandLine& line : commandLines()) {
        for (const auto& [function, calls] : callCounts(observe(line))) {
            called.insert(function);
        }
    }
    std::set<std::string> expected = declaredFunctions();
    for (const std::string& function : functionsOfNoCommand()) {
        EXPECT_EQ(expected.erase(function), 1U) << function;
    }
    // The dispatcher asks for the mode, and two handlers do.
    EXPECT_EQ(called, expected);
}

TEST_F(CommandLinesTest, NameNoFailureThatDoesNotOccur)
{
    for (const CommandLine& line : commandLines()) {
        const std::map<std::string, int> counts = callCounts(observe(line));
        for (const Failure& failure : line.example->failures) {
            const auto found = counts.find(std::string(failure.function));
            ASSERT_NE(found, counts.end()) << line.text << ": " << failure.function;
            EXPECT_LE(failure.call.value_or(1), found->second) << line.text << ": " << failure.function;
        }
    }
}

[[maybe_unused]] const testing::Environment* const registered = testing::AddGlobalTestEnvironment(&figures());

}  // namespace
}  // namespace faults_test
