/**
 * @file command_lines.h
 * One or more lines for every row of the command table, and what a failure of the device-access library makes of them.
 */
#ifndef COMMAND_LINES_H
#define COMMAND_LINES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util_cmd.h"

namespace faults_test
{

/** What a command does once a function has failed. */
enum class Sequel {
    kEnds,        /**< prints the text and ends: no file is written, nothing but `then` is called */
    kGoesOn,      /**< prints the text in the place of what is printed up to the next call, and goes on with that */
    kSkips,       /**< prints the text and goes on with the next call of the same function */
    kShowsAnswer, /**< goes on as always and shows the result where it would have shown that of a success */
    kReturnsIt,   /**< ends, and its status is the result */
};

/** The results that count as failures. */
enum class Failing { kNotZero, kNegative };

/** What becomes of a function's failure. Without a matching one a function's result is not looked at. */
struct Failure {
    std::string_view function;
    /** Printed; "{}" stands for the result, "{n}" for the number of the call less 1. */
    std::string_view text;
    int status = kStatusDone;
    Sequel sequel = Sequel::kEnds;
    Failing failing = Failing::kNotZero;
    /** Only this result. */
    std::optional<int> result{};
    /** Only this call, the first being number 1. */
    std::optional<int> call{};
    /** Only when the function has delivered its outputs all the same, or only when not. */
    std::optional<bool> delivered{};
    /** The functions that the command still calls, separated by blanks; for kEnds. */
    std::string_view then{};
};

/** The arguments of a line. */
struct Example {
    std::string_view arguments;
    /** The first one that matches counts. */
    std::vector<Failure> failures{};
    /** A function that fails at every call to begin with, and how: what is called then only is reached so. */
    std::string_view failed{};
    int failedResult = 0;
    unsigned deviceId = 0x201;
    /** Standard input. */
    std::string_view keys{};
};

/** The lines of the rows with one handler. */
struct Family {
    CmdHandler handler;
    std::vector<Example> examples;
    /** The one row that is meant, of several with the handler. */
    std::string_view row{};
    /** A line run before each of the others: it sets what the handler remembers. */
    std::string_view before{};
    /** The command goes by what it reads: answers that do not come make it wait. */
    bool waitsForAnswers = false;
};

/** A line to run. */
struct CommandLine {
    const UtilCmd* row;
    const Family* family;
    const Example* example;
    std::string text;
};

/** Every example of every row, under each of the row's names. */
const std::vector<CommandLine>& commandLines();

/** The names of a row. */
std::vector<std::string> namesOf(const UtilCmd& row);

}  // namespace faults_test

#endif
