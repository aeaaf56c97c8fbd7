#include "drivers/feature_switches.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "drivers/long_read.h"

namespace vek
{
namespace
{

using namespace feature_switches;

/// A name in place, so that the table needs no relocation.
using Name = std::array<char, 16>;

constexpr std::array<Name, kTraces> kTraceNames{
    {{"RVT_GL_TRACE"}, {"RVT_GLX_TRACE"}, {"RVT_ES_TRACE"}, {"RVT_EGL_TRACE"}}};
/// By mode, from 1.
constexpr std::array<Name, 3> kModeNames{{{"Combined"}, {"Independent"}, {"Balance"}}};

/// The words of a command, one after the other.
class Words
{
public:
    explicit Words(std::string_view text) : rest_(text) {}

    /// The next word, empty when there is none.
    std::string_view next()
    {
        constexpr std::string_view kBetween = " ,\t\r\n";
        rest_.remove_prefix(std::min(rest_.find_first_not_of(kBetween), rest_.size()));
        const std::string_view word = rest_.substr(0, rest_.find_first_of(kBetween));
        rest_.remove_prefix(word.size());
        return word;
    }

private:
    std::string_view rest_;
};

bool isName(std::string_view word, std::string_view name)
{
    return word.size() == name.size() && strncasecmp(word.data(), name.data(), name.size()) == 0;
}

/// The number that a decimal word of one digit stands for, 0 for any other word.
std::uint32_t digit(std::string_view word)
{
    return word.size() == 1 && word[0] >= '0' && word[0] <= '9' ? static_cast<std::uint32_t>(word[0] - '0') : 0;
}

/// The number, from 1, of the choice that a word names or numbers; 0 when it is none.
std::uint32_t chosen(std::string_view word, std::span<const Name> names)
{
    for (std::uint32_t number = 1; number <= names.size(); ++number) {
        if (digit(word) == number || isName(word, names[number - 1].data())) {
            return number;
        }
    }
    return 0;
}

/// A command on its way.
class FeatureCommand
{
public:
    FeatureCommand(AddressSpace& registers, std::string_view text, std::FILE* out, CardLock* lock)
        : registers_(registers), words_(text), out_(out), lock_(lock)
    {
    }

    int run();

private:
    int openTraces();
    int openTexture();
    int chooseMode();
    int printOpen();
    int closeAll();
    int printChoices();
    void printTraces();
    void printModes();
    void printTrace(std::uint32_t number);
    void printMode(std::uint32_t multiGpu);
    int refuse(const char* where, std::string_view word);
    int writeLong(std::uint64_t address, std::uint32_t value);
    int open(std::uint32_t functions);
    int clear();

    AddressSpace& registers_;
    Words words_;
    std::FILE* out_;
    CardLock* lock_;
};

int FeatureCommand::writeLong(std::uint64_t address, std::uint32_t value)
{
    return registers_.write(address, kRegisterWidth, value);
}

int FeatureCommand::open(std::uint32_t functions)
{
    const CardHold hold(lock_);
    std::uint32_t present = 0;
    const int result = readLong(registers_, kFunctions, present);
    return result == VEK_OK ? writeLong(kFunctions, present | functions) : result;
}

int FeatureCommand::clear()
{
    const CardHold hold(lock_);
    const int result = writeLong(kFunctions, 0);
    return result == VEK_OK ? writeLong(kMultiGpu, 0) : result;
}

/// Prints a word that nothing knows; whatever it holds, it becomes part of one short line.
int FeatureCommand::refuse(const char* where, std::string_view word)
{
    constexpr std::size_t kMostShown = 32;
    std::fprintf(out_, "func%s: unknown \"", where);
    for (const char character : word.substr(0, kMostShown)) {
        std::fputc(character >= ' ' && character <= '~' ? character : '.', out_);
    }
    std::fputs(word.size() > kMostShown ? "...\"\n" : "\"\n", out_);
    return VEK_BAD_ARGUMENT;
}

void FeatureCommand::printTrace(std::uint32_t number)
{
    std::fprintf(out_, "func 3D: %s on\n", kTraceNames[number - 1].data());
}

void FeatureCommand::printMode(std::uint32_t multiGpu)
{
    const std::uint32_t mode = multiGpu & kModeMask;
    std::fprintf(out_, "func Mgpu: %s", kModeNames[mode - 1].data());
    if (mode == kModeIndependent) {
        std::fprintf(out_, " for %u", static_cast<unsigned>(multiGpu >> kGpusShift & 0x7));
    }
    std::fputc('\n', out_);
}

void FeatureCommand::printTraces()
{
    std::fputs("func 3D:", out_);
    for (std::uint32_t number = 1; number <= kTraceNames.size(); ++number) {
        std::fprintf(out_, " %u.%s", static_cast<unsigned>(number), kTraceNames[number - 1].data());
    }
    std::fputc('\n', out_);
}

void FeatureCommand::printModes()
{
    std::fprintf(out_, "func Mgpu: 1.%s 2.%s for n (1 to %u) 3.%s\n", kModeNames[0].data(), kModeNames[1].data(),
                 static_cast<unsigned>(kMaxGpus), kModeNames[2].data());
}

int FeatureCommand::printChoices()
{
    printTraces();
    std::fputs("func Texture\n", out_);
    printModes();
    std::fputs("func On: view open functions\nfunc close: close all functions\n", out_);
    return VEK_OK;
}

int FeatureCommand::openTraces()
{
    std::string_view word = words_.next();
    if (word.empty()) {
        printTraces();
    }
    for (; !word.empty(); word = words_.next()) {
        const std::uint32_t number = chosen(word, kTraceNames);
        if (number == 0) {
            return refuse(" 3D", word);
        }
        const int result = open(1U << (number - 1));
        if (result != VEK_OK) {
            return result;
        }
        printTrace(number);
    }
    return VEK_OK;
}

int FeatureCommand::openTexture()
{
    const int result = open(kTexture);
    if (result == VEK_OK) {
        std::fputs("func Texture: on\n", out_);
    }
    return result;
}

int FeatureCommand::chooseMode()
{
    const std::string_view word = words_.next();
    if (word.empty()) {
        printModes();
        return VEK_OK;
    }
    std::uint32_t multiGpu = chosen(word, kModeNames);
    if (multiGpu == 0) {
        return refuse(" Mgpu", word);
    }
    if (multiGpu == kModeIndependent) {
        const std::string_view count = words_.next();
        const std::uint32_t gpus = count.empty() ? 1 : digit(count);
        if (gpus == 0 || gpus > kMaxGpus) {
            return refuse(" Mgpu", count);
        }
        multiGpu |= gpus << kGpusShift;
    }
    const int result = writeLong(kMultiGpu, multiGpu);
    if (result == VEK_OK) {
        printMode(multiGpu);
    }
    return result;
}

int FeatureCommand::printOpen()
{
    std::uint32_t functions = 0;
    std::uint32_t multiGpu = 0;
    int result = readLong(registers_, kFunctions, functions);
    if (result == VEK_OK) {
        result = readLong(registers_, kMultiGpu, multiGpu);
    }
    if (result != VEK_OK) {
        return result;
    }
    for (std::uint32_t number = 1; number <= kTraces; ++number) {
        if ((functions >> (number - 1) & 1) != 0) {
            printTrace(number);
        }
    }
    if ((functions & kTexture) != 0) {
        std::fputs("func Texture: on\n", out_);
    }
    if ((multiGpu & kModeMask) != 0) {
        printMode(multiGpu);
    }
    if ((functions & kFunctionsMask) == 0 && (multiGpu & kModeMask) == 0) {
        std::fputs("func: no function is open\n", out_);
    }
    return VEK_OK;
}

int FeatureCommand::closeAll()
{
    const int result = clear();
    if (result == VEK_OK) {
        std::fputs("func: all functions are closed\n", out_);
    }
    return result;
}

int FeatureCommand::run()
{
    words_.next();
    const std::string_view function = words_.next();
    if (function.empty()) {
        return printChoices();
    }
    if (isName(function, "3D")) {
        return openTraces();
    }
    if (isName(function, "Texture")) {
        return openTexture();
    }
    if (isName(function, "Mgpu")) {
        return chooseMode();
    }
    if (isName(function, "On")) {
        return printOpen();
    }
    if (isName(function, "close")) {
        return closeAll();
    }
    return refuse("", function);
}

}  // namespace

int runFeatureCommand(AddressSpace& registers, const char* text, std::FILE* out, CardLock* lock)
{
    return FeatureCommand(registers, text, out, lock).run();
}

}  // namespace vek
