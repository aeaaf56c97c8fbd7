#include "tovira_parse/progress.h"

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include "tovira_parse/terminal.h"

namespace
{

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kDelay = 2 * kSecond;
constexpr std::int64_t kRedrawInterval = kSecond / 10;
// Every line of a dump to the same terminal takes the progress line away, so it comes back soon.
constexpr std::int64_t kSharedRedrawInterval = kSecond / 100;
constexpr int kUsualColumns = 80;
// Less than this takes no two seconds, on the slowest line a few, and is not worth a thread.
constexpr std::uint64_t kLeastWatched = 4096;

// The column at which standard output stands, at whose row or below it the line is drawn; -1 when there is no line. The
// handlers of signals read it.
constexpr int kNothingShown = -1;
std::atomic<int> shownAt = kNothingShown;
static_assert(std::atomic<int>::is_always_lock_free);

std::int64_t now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * kSecond + time.tv_nsec;
}

timespec toTimespec(std::int64_t time)
{
    return {.tv_sec = time / kSecond, .tv_nsec = time % kSecond};
}

bool isCapableTerminal()
{
    const char* const terminal = secure_getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && (terminal == nullptr || strcmp(terminal, "dumb") != 0);
}

bool canBeShown()
{
    static const bool possible = isCapableTerminal();
    return possible;
}

int terminalColumns()
{
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

// A sequence of control functions (ECMA-48), put together with nothing that a signal handler may not call.
class Sequence
{
public:
    void add(std::string_view text)
    {
        const std::size_t added = std::min(text.size(), text_.size() - length_);
        std::copy_n(text.data(), added, text_.data() + length_);
        length_ += added;
    }

    // From the start of a row back to a column of the row above.
    void addReturn(unsigned column)
    {
        std::array<char, 10> digits;
        std::size_t first = digits.size();
        for (unsigned rest = column; rest != 0; rest /= 10) {
            digits[--first] = static_cast<char>('0' + rest % 10);
        }
        add("\033[A\033[");
        add({digits.data() + first, digits.size() - first});
        add("C");
    }

    // A terminal that takes nothing more loses the line, and nothing but the line.
    void send() const { [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text_.data(), length_); }

private:
    std::array<char, 256> text_;
    std::size_t length_ = 0;
};

// Puts the text in place of the line, and the cursor back to the column where it was. Behind text on its row the line
// stands in the row below.
void replaceLine(std::string_view text, int column)
{
    Sequence sequence;
    sequence.add(column == 0 ? "\r" : "\r\n");
    sequence.add(text);
    sequence.add("\033[K\r");
    if (column != 0) {
        sequence.addReturn(static_cast<unsigned>(column));
    }
    sequence.send();
}

// Draws the text, cut to the terminal's width.
void draw(std::string_view text, int column)
{
    const int columns = terminalColumns();
    if (!isForegroundOf(STDERR_FILENO) || column >= columns) {
        return;
    }
    const sigset_t before = holdBackSignals();
    shownAt = column;
    replaceLine(text.substr(0, static_cast<std::size_t>(columns - 1)), column);
    // A signal's handler on the other thread may have taken away what was not there yet.
    if (shownAt == kNothingShown) {
        replaceLine("", column);
    }
    releaseSignals(before);
}

using AmountText = std::array<char, 32>;

// Bytes in the binary unit (IEC 80000-13) that leaves a number of up to four digits.
AmountText amountText(std::uint64_t bytes)
{
    constexpr const char* kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    constexpr double kStep = 1024;
    auto amount = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (amount >= kStep) {
        amount /= kStep;
        ++unit;
    }
    AmountText text;
    snprintf(text.data(), text.size(), "%.*f %s", unit == 0 ? 0 : 1, amount, kUnits[unit]);
    return text;
}

using DurationText = std::array<char, 32>;

// Minutes and seconds, and hours when there are some.
DurationText durationText(std::int64_t seconds)
{
    constexpr std::int64_t kMinute = 60;
    constexpr std::int64_t kHour = 60 * kMinute;
    DurationText text;
    if (seconds >= kHour) {
        snprintf(text.data(), text.size(), "%ld:%02ld:%02ld", seconds / kHour, seconds % kHour / kMinute,
                 seconds % kMinute);
    } else {
        snprintf(text.data(), text.size(), "%ld:%02ld", seconds / kMinute, seconds % kMinute);
    }
    return text;
}

void drawProgress(const Progress& progress, std::uint64_t done, int column)
{
    const double share = static_cast<double>(done) / static_cast<double>(progress.total);
    const auto elapsed = static_cast<double>(progress.lookedAt - progress.startedAt);
    const auto left = static_cast<std::int64_t>(elapsed * (1 - share) / share / static_cast<double>(kSecond));
    std::array<char, 128> text;
    const int length =
        snprintf(text.data(), text.size(), "%s: %d %%, %s of %s, %s left", progress.name, static_cast<int>(share * 100),
                 amountText(done).data(), amountText(progress.total).data(), durationText(left).data());
    draw({text.data(), static_cast<std::size_t>(length)}, column);
}

void drawElapsedTime(const ElapsedTime& work, std::int64_t elapsed)
{
    std::array<char, 128> text;
    const int length = snprintf(text.data(), text.size(), "%s: %s, %s so far", work.name, amountText(work.bytes).data(),
                                durationText(elapsed / kSecond).data());
    draw({text.data(), static_cast<std::size_t>(length)}, 0);
}

// Draws the line once a second until the work has ended.
void* watch(void* argument)
{
    auto& work = *static_cast<ElapsedTime*>(argument);
    std::int64_t elapsed = kDelay;
    timespec due = toTimespec(work.startedAt + elapsed);
    while (sem_clockwait(&work.ended, CLOCK_MONOTONIC, &due) != 0 && errno == ETIMEDOUT) {
        drawElapsedTime(work, elapsed);
        elapsed += kSecond;
        due = toTimespec(work.startedAt + elapsed);
    }
    hideProgress();
    return nullptr;
}

}  // namespace

bool outputSharesProgressTerminal()
{
    struct stat output = {};
    struct stat error = {};
    return isatty(STDOUT_FILENO) == 1 && fstat(STDOUT_FILENO, &output) == 0 && fstat(STDERR_FILENO, &error) == 0 &&
           output.st_rdev == error.st_rdev;
}

Progress beginProgress(const char* name, std::uint64_t total)
{
    if (!canBeShown()) {
        return {.total = total, .stepsToLook = UINT64_MAX};
    }
    const std::int64_t start = now();
    return {.total = total,
            .stepsToLook = 1,
            .stepsOfALook = 1,
            .startedAt = start,
            .lookedAt = start,
            .dueAt = start + kDelay,
            .sharesOutput = outputSharesProgressTerminal(),
            .name = name};
}

void lookAtProgress(Progress& progress, std::uint64_t done, int column)
{
    const std::int64_t interval = progress.sharesOutput ? kSharedRedrawInterval : kRedrawInterval;
    const std::int64_t time = now();
    const std::int64_t spent = time - progress.lookedAt;
    progress.lookedAt = time;
    // Two to four looks in an interval, whatever a step takes; a step that takes longer than the last ones did is
    // noticed at the next look.
    if (spent < interval / 4) {
        progress.stepsOfALook *= 2;
    } else if (spent > interval / 2) {
        progress.stepsOfALook = std::max<std::uint64_t>(progress.stepsOfALook / 4, 1);
    }
    progress.stepsToLook = progress.stepsOfALook;
    if (time < progress.dueAt) {
        return;
    }
    progress.dueAt = time + interval;
    guardTerminalSignals();
    if (progress.sharesOutput) {
        fflush(stdout);
        drawProgress(progress, done, column);
    } else {
        drawProgress(progress, done, 0);
    }
}

void hideProgress()
{
    if (shownAt == kNothingShown) {
        return;
    }
    const sigset_t before = holdBackSignals();
    hideProgressFromSignal();
    releaseSignals(before);
}

void hideProgressFromSignal()
{
    const int column = shownAt.exchange(kNothingShown);
    if (column != kNothingShown && isForegroundOf(STDERR_FILENO)) {
        replaceLine("", column);
    }
}

ElapsedTime::ElapsedTime(const char* workName, std::uint64_t workBytes) : name(workName), bytes(workBytes)
{
    if (bytes < kLeastWatched || !canBeShown() || sem_init(&ended, 0, 0) != 0) {
        return;
    }
    startedAt = now();
    guardTerminalSignals();
    const sigset_t before = holdBackSignals();
    running = pthread_create(&thread, nullptr, watch, this) == 0;
    releaseSignals(before);
}

ElapsedTime::~ElapsedTime()
{
    if (running) {
        sem_post(&ended);
        pthread_join(thread, nullptr);
    }
}
