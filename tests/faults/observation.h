/**
 * @file observation.h
 * Runs a line in this process, against the recording library, with one of the library's functions failing.
 */
#ifndef OBSERVATION_H
#define OBSERVATION_H

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "command_lines.h"
#include "recording_vek.h"

namespace faults_test
{

/** What goes wrong in one call of a function, or in every one. */
struct Fault {
    std::string function;
    /** The first call being number 1; every call when 0. */
    int call = 1;
    int result = 0;
    std::optional<recording_vek::Delivery> delivery{};
    bool nullText = false;
};

std::ostream& operator<<(std::ostream& stream, const Fault& fault);

/** What the library answers when nothing goes wrong. */
enum class Answers {
    kTelling, /**< values of their own, each another */
    kZero,    /**< what an output holds that is never delivered */
};

/** Who runs the line. */
enum class Runner { kHandler, kRepeat, kDispatcher };

/** What was seen of a run. */
struct Observation {
    int status = 0;
    std::string output{};
    std::string error{};
    std::vector<std::string> calls{};
    /** How much had been printed when each call came. */
    std::vector<std::size_t> printedBefore{};
    /** The file that the line saves, when there is one. */
    std::optional<std::string> saved{};

    bool operator==(const Observation&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Observation& seen);

/** How a line is run. */
struct Conditions {
    Answers answers = Answers::kTelling;
    Runner runner = Runner::kHandler;
    /** What fills the memory that the line's variables and buffers are put in. */
    unsigned char poison = 0xa5;
};

/** Runs a line in the current folder, which holds the files of writeInputFiles(). */
Observation observe(const CommandLine& line, const Conditions& conditions = {},
                    const std::optional<Fault>& fault = std::nullopt);

/** Runs a line whose n-th allocation is refused. @param refused receives whether it made that many */
Observation observeWithoutMemory(const CommandLine& line, int number, bool& refused);

/** Writes the files that the lines read into the current folder. */
void writeInputFiles();

/** The name in a recorded call. */
std::string functionOf(const std::string& call);

/** The answer of vek_qz200_get_freq() to a recorded call of it. */
int clockAnswer(const std::string& call);

}  // namespace faults_test

#endif
