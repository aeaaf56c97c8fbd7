/**
 * @file syscall_faults.h
 * Runs a program whose system calls fail when told to, as they do where there is no room, no right or no time: the
 * program is traced, and a call that is to fail is not made at all.
 */
#ifndef SYSCALL_FAULTS_H
#define SYSCALL_FAULTS_H

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace faults_test
{

/** A system call as it is about to be made. */
struct SystemCall {
    std::uint64_t number;
    std::array<std::uint64_t, 6> arguments;
};

/** Which system calls fail, and how. */
struct CallFault {
    std::function<bool(const SystemCall& call)> matches;
    /** 0: they succeed without having been made, and answer 0. */
    int error;
    /** The first one being number 1; every one when 0. */
    int occurrence = 1;
    /** All behind that one fail as well. */
    bool lasts = false;
};

/** The faults of a run; of several that match a call, the first one counts. */
using CallFaults = std::vector<CallFault>;

/** How a traced program ended. */
struct TracedRun {
    std::string output{};
    std::string error{};
    int exitStatus = -1; /**< -1 when a signal ended it */
    int signal = 0;
    bool timedOut = false;
    /** How many calls have matched each fault, those before main() left out. */
    std::vector<int> matching{};
};

/** What to run. */
struct TracedCommand {
    std::vector<std::string> arguments;
    std::string folder{};
    /** The contents of a file on standard input. */
    std::string input{};
    /** Typed instead at a terminal on standard input, one piece whenever the program waits for input. */
    std::vector<std::string> keys{};
};

/** Whether this machine lets a process trace its children. */
bool canTrace();

/** Runs our program, which must be `arguments[0]`, from its main() on with faults. */
TracedRun runWithFaults(const TracedCommand& command, const CallFaults& faults);

}  // namespace faults_test

#endif
