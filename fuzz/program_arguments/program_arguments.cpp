// The arguments of the program, one a line, the first being its name: options and then the whole of main, with a few
// lines typed at the console, over a library that answers whatever the input says.

#include <getopt.h>

#include <csetjmp>
#include <cstdint>
#include <cstdlib>

#include "support/console.h"
#include "support/hostile_vek.h"
#include "support/require.h"
#include "support/sandbox.h"
#include "support/words.h"

// The entry point, compiled under this name.
int tovira_main(int argc, char** argv);

extern "C" {
[[noreturn]] void __real_exit(int status);
[[noreturn]] void __real_abort();
}

namespace
{

constexpr std::size_t kTextWithoutPlaceForItsEnd = 256;

std::jmp_buf endOfRun;
bool running = false;
bool abortIsRight = false;

bool isDocumented(int status)
{
    return status == EXIT_SUCCESS || status == EXIT_FAILURE;
}

[[noreturn]] void endRun()
{
    running = false;
    std::longjmp(endOfRun, 1);
}

void run(fuzz::Words& words)
{
    optind = 0;
    running = true;
    if (setjmp(endOfRun) == 0) {
        fuzz::require(isDocumented(tovira_main(words.count(), words.pointers())));
    }
    running = false;
}

}  // namespace

extern "C" {

[[noreturn]] void __wrap_exit(int status)
{
    if (running) {
        fuzz::require(isDocumented(status));
        endRun();
    }
    __real_exit(status);
}

[[noreturn]] void __wrap_abort()
{
    if (running && abortIsRight) {
        endRun();
    }
    __real_abort();
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static constexpr char kTyped[] = "ver\rhelp \x1b[A\x1b[Dq\r\rquit\r";
    const fuzz::TextAndAnswers input = fuzz::splitInput(data, size);
    const bool terminal = !input.answers.empty() && input.answers.back() % 2 != 0;
    fuzz::Words words(input.text);
    abortIsRight = words.longest() >= kTextWithoutPlaceForItsEnd;
    const fuzz::Sandbox sandbox({kTyped, sizeof kTyped - 1}, terminal);
    fuzz::answerFrom(input.answers);
    run(words);
    return 0;
}

}  // extern "C"
