/**
 * @file child_process.h
 * Runs a program, or a part of the test itself, in a process of its own and tells how it ended and what it wrote.
 */
#ifndef CHILD_PROCESS_H
#define CHILD_PROCESS_H

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace child_process
{

inline constexpr std::chrono::milliseconds kTimeout = std::chrono::seconds(60);

/** What to run. */
struct Command {
    /** The program's path (looked for in PATH when it has no '/') and its arguments. */
    std::vector<std::string> arguments;
    /** Variables set on top of the test's own environment. */
    std::map<std::string, std::string> environment{};
    /** Standard input, a file of these bytes. */
    std::string input{};
    /** Working folder; the test's own when empty. */
    std::string folder{};
    std::chrono::milliseconds timeout = kTimeout;
};

/** How a process ended. */
struct Result {
    std::string output;    /**< standard output */
    std::string error;     /**< standard error */
    int exitStatus = -1;   /**< -1 when a signal ended it */
    int signal = 0;        /**< the signal that ended it, or 0 */
    bool timedOut = false; /**< it was killed because its time was over */
};

/** Runs a program to its end; kills it when the time is over. Throws std::system_error when it cannot be started. */
Result run(const Command& command);

/** Runs a function in a forked copy of this process, which then ends with exit status 0 unless the function ends it
    otherwise. An exception that leaves the function aborts the copy. Standard input is empty. */
Result runForked(const std::function<void()>& function, std::chrono::milliseconds timeout = kTimeout);

}  // namespace child_process

#endif
