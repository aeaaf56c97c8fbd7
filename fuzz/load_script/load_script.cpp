// A script file for `load`, over a library that answers whatever the input says. The script may load itself and run
// the same file as a script of the library.

#include "support/console.h"
#include "support/hostile_vek.h"
#include "support/sandbox.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const fuzz::TextAndAnswers input = fuzz::splitInput(data, size);
    const fuzz::Sandbox sandbox;
    fuzz::Sandbox::addFile("script", std::span(data, input.text.size()));
    fuzz::answerFrom(input.answers);
    // The empty line repeats what the script has run last.
    fuzz::runLines("load script\n\nload script;ver");
    return 0;
}
