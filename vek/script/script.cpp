#include "script/script.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string_view>

#include "host_file.h"
#include "script/script_line.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr std::size_t kMaxScriptSize = std::size_t{1024} * 1024;
constexpr std::uint64_t kPollMilliseconds = 1;
constexpr std::uint64_t kNanosecondsPerMillisecond = 1'000'000;

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};

/// The text of a script file.
struct ScriptText {
    std::unique_ptr<char, FreeText> bytes;
    std::size_t size = 0;

    std::string_view view() const { return {bytes.get(), size}; }
};

/// Walks over the lines of a text, LF or CR LF at their ends.
class ScriptLines
{
public:
    explicit ScriptLines(std::string_view text) : rest_(text) {}

    /// Steps to the next line; false when there is none.
    bool next()
    {
        if (rest_.empty()) {
            return false;
        }
        const std::size_t end = rest_.find('\n');
        line_ = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        if (line_.ends_with('\r')) {
            line_.remove_suffix(1);
        }
        ++number_;
        return true;
    }

    std::string_view line() const { return line_; }
    unsigned number() const { return number_; }

private:
    std::string_view rest_;
    std::string_view line_;
    unsigned number_ = 0;
};

/// Tells in one line why a script is not run at all.
void reportFile(const char* name, const char* reason)
{
    std::fprintf(stderr, "%s: %s\n", name, reason);
}

bool readScript(const char* name, ScriptText& text)
{
    HostFile file = HostFile::openToRead(name);
    if (!file.isOpen()) {
        reportFile(name, errno == EINVAL ? "not a regular file" : std::strerror(errno));
        return false;
    }
    // One byte more than a script may have shows that it has too many.
    text.bytes.reset(static_cast<char*>(std::malloc(kMaxScriptSize + 1)));
    if (text.bytes == nullptr) {
        reportFile(name, std::strerror(ENOMEM));
        return false;
    }
    const std::ptrdiff_t count = file.read(text.bytes.get(), kMaxScriptSize + 1);
    if (count < 0) {
        reportFile(name, std::strerror(errno));
        return false;
    }
    text.size = static_cast<std::size_t>(count);
    if (text.size > kMaxScriptSize) {
        reportFile(name, "a script may have 1 MiB at most");
        return false;
    }
    return true;
}

bool checkScript(const char* name, std::string_view text)
{
    for (ScriptLines lines(text); lines.next();) {
        ScriptStep step;
        const char* fault = parseScriptLine(lines.line(), step);
        if (fault != nullptr) {
            std::fprintf(stderr, "%s:%u: %s\n", name, lines.number(), fault);
            return false;
        }
    }
    return true;
}

std::uint64_t monotonicNanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(now.tv_nsec);
}

void waitMilliseconds(std::uint64_t milliseconds)
{
    timespec left{.tv_sec = static_cast<time_t>(milliseconds / 1000),
                  .tv_nsec = static_cast<long>(milliseconds % 1000) * 1'000'000};
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
    }
}

int digitsOf(const ScriptStep& step)
{
    return static_cast<int>(2 * step.width);
}

/// Where a script stands, for what it has to tell when it ends early.
struct ScriptPlace {
    const char* name;
    unsigned line;
};

/// Standard error, with what the script has read so far printed first.
FILE* errorStream()
{
    std::fflush(stdout);
    return stderr;
}

ScriptResult failRead(const ScriptPlace& place, const ScriptStep& step, std::uint64_t value, int result)
{
    std::fprintf(errorStream(), "%s:%u: %08" PRIx64 ": expected an answer, read %0*" PRIx64 " (result %d)\n",
                 place.name, place.line, step.address, digitsOf(step), value, result);
    return kScriptFailed;
}

ScriptResult failWrite(const ScriptPlace& place, const ScriptStep& step, int result)
{
    std::fprintf(errorStream(),
                 "%s:%u: %08" PRIx64 ": expected to write %0*" PRIx64 ", but nothing took it (result %d)\n", place.name,
                 place.line, step.address, digitsOf(step), step.value, result);
    return kScriptFailed;
}

ScriptResult failCheck(const ScriptPlace& place, const ScriptStep& step, std::uint64_t value)
{
    std::fprintf(errorStream(),
                 "%s:%u: %08" PRIx64 ": expected %0*" PRIx64 " under mask %0*" PRIx64 ", read %0*" PRIx64 "\n",
                 place.name, place.line, step.address, digitsOf(step), step.value, digitsOf(step), step.mask,
                 digitsOf(step), value);
    return kScriptFailed;
}

/// Reads the step's item, whose bits beyond its width come out 0 even without an answer.
ReadResult readItemOf(const ScriptStep& step, AddressSpace& registers)
{
    const auto [result, value] = registers.read(step.address, step.width);
    return {result, value & (kAllOnes >> (8 * (sizeof value - step.width)))};
}

ScriptResult runRead(const ScriptPlace& place, const ScriptStep& step, AddressSpace& registers)
{
    const auto [result, value] = readItemOf(step, registers);
    if (result != VEK_OK) {
        return failRead(place, step, value, result);
    }
    std::printf("%08" PRIx64 ": %0*" PRIx64 "\n", step.address, digitsOf(step), value);
    return kScriptDone;
}

ScriptResult runWrite(const ScriptPlace& place, const ScriptStep& step, AddressSpace& registers)
{
    const int result = registers.write(step.address, step.width, step.value);
    return result == VEK_OK ? kScriptDone : failWrite(place, step, result);
}

/// Reads until the comparison holds, for the step's time at most, and once in any case.
ScriptResult runCheck(const ScriptPlace& place, const ScriptStep& step, AddressSpace& registers)
{
    const std::uint64_t start = monotonicNanoseconds();
    for (;;) {
        // Taken before the read, so that the last read comes after the whole time.
        const bool last = monotonicNanoseconds() - start >= step.milliseconds * kNanosecondsPerMillisecond;
        const auto [result, value] = readItemOf(step, registers);
        if (result != VEK_OK) {
            return failRead(place, step, value, result);
        }
        if ((value & step.mask) == step.value) {
            return kScriptDone;
        }
        if (last) {
            return failCheck(place, step, value);
        }
        waitMilliseconds(kPollMilliseconds);
    }
}

ScriptResult runStep(const ScriptPlace& place, const ScriptStep& step, AddressSpace& registers)
{
    switch (step.action) {
        case ScriptAction::kRead:
            return runRead(place, step, registers);
        case ScriptAction::kWrite:
            return runWrite(place, step, registers);
        case ScriptAction::kCheck:
        case ScriptAction::kWaitUntil:
            return runCheck(place, step, registers);
        case ScriptAction::kWait:
            waitMilliseconds(step.milliseconds);
            break;
        case ScriptAction::kNone:
            break;
    }
    return kScriptDone;
}

}  // namespace

ScriptResult runScript(const char* name, AddressSpace& registers)
{
    if (name == nullptr) {
        reportFile("run", "the name of a script is missing");
        return kScriptInvalid;
    }
    ScriptText text;
    if (!readScript(name, text) || !checkScript(name, text.view())) {
        return kScriptInvalid;
    }
    for (ScriptLines lines(text.view()); lines.next();) {
        ScriptStep step;
        parseScriptLine(lines.line(), step);
        const ScriptResult result = runStep({name, lines.number()}, step, registers);
        if (result != kScriptDone) {
            return result;
        }
    }
    return kScriptDone;
}

}  // namespace vek
