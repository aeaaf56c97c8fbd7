// Console lines through the dispatcher and the handlers, over a library that answers whatever the input says.

#include "support/console.h"
#include "support/hostile_vek.h"
#include "support/sandbox.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // What the commands that read keys or a number are given: keys that end them stand among others.
    static constexpr char kTyped[] = "x7f\nq\n0\nd\n-1 zz\nqQ\x03";
    const fuzz::TextAndAnswers input = fuzz::splitInput(data, size);
    const bool terminal = !input.answers.empty() && input.answers.back() % 2 != 0;
    const fuzz::Sandbox sandbox({kTyped, sizeof kTyped - 1}, terminal);
    fuzz::answerFrom(input.answers);
    fuzz::runLines(input.text);
    return 0;
}
