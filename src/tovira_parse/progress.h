/// A line on standard error that tells how far long work is. It comes up when the work has run for two seconds, and
/// goes when the work ends or a signal ends or stops the program. There is none unless standard error is a terminal
/// that understands ECMA-48 and this process is in its foreground; standard output never sees any of it.
#ifndef TOVIRA_PARSE_PROGRESS_H
#define TOVIRA_PARSE_PROGRESS_H

#include <pthread.h>
#include <semaphore.h>

#include <cstdint>

/// Work of known length that goes on in steps. At most one at a time.
struct Progress {
    std::uint64_t total = 0;         ///< bytes
    std::uint64_t stepsToLook = 0;   ///< until the clock is looked at again; never when this is UINT64_MAX
    std::uint64_t stepsOfALook = 1;  ///< between two looks, so many that looking costs nothing
    std::int64_t startedAt = 0;      ///< nanoseconds of the monotonic clock, as all times here
    std::int64_t lookedAt = 0;
    std::int64_t dueAt = 0;      ///< when the line is drawn next
    bool sharesOutput = false;   ///< the work prints to the same terminal
    const char* name = nullptr;  ///< what is done; kept, not copied
};

/// Begins work on so many bytes.
Progress beginProgress(const char* name, std::uint64_t total);

/// Looks at the clock after `done` bytes, and draws the line when it is due; see stepProgress.
void lookAtProgress(Progress& progress, std::uint64_t done, int column);

/// Tells that `done` bytes are done, and at which column of the terminal standard output stands.
inline void stepProgress(Progress& progress, std::uint64_t done, int column)
{
    if (--progress.stepsToLook == 0) {
        lookAtProgress(progress, done, column);
    }
}

/// Takes the line away until it is due again: to be called before work prints, and at its end.
void hideProgress();

/// Shows, while it lives, the time that work on 4 KiB or more takes which gives no sign of itself. The work must not
/// print. A thread of its own draws the line, with all signals held back, so that no wait of the work's is cut short.
struct ElapsedTime {
    /// Begins work on so many bytes; `name` is kept, not copied.
    ElapsedTime(const char* name, std::uint64_t bytes);
    ~ElapsedTime();
    ElapsedTime(const ElapsedTime&) = delete;
    ElapsedTime& operator=(const ElapsedTime&) = delete;

    const char* name;
    std::uint64_t bytes;
    std::int64_t startedAt = 0;  ///< nanoseconds of the monotonic clock
    sem_t ended{};               ///< posted when the work has ended
    pthread_t thread{};
    bool running = false;  ///< there is a thread
};

/// Whether standard output is the terminal that the line is on.
bool outputSharesProgressTerminal();

/// Takes the line away from within a signal handler.
void hideProgressFromSignal();

#endif
