// A script file for `load`, over a library that answers whatever the input says. The script may load itself and run
// the same file as a script of the library. A NUL ends the script in the input, so another byte stands for it there.

#include <algorithm>
#include <vector>

#include "support/console.h"
#include "support/hostile_vek.h"
#include "support/sandbox.h"

namespace
{

constexpr std::uint8_t kStandsForNul = 1;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const fuzz::TextAndAnswers input = fuzz::splitInput(data, size);
    std::vector<std::uint8_t> script(data, data + input.text.size());
    std::replace(script.begin(), script.end(), kStandsForNul, std::uint8_t{0});
    const fuzz::Sandbox sandbox;
    fuzz::Sandbox::addFile("script", script);
    fuzz::answerFrom(input.answers);
    // The empty line repeats what the script has run last.
    fuzz::runLines("load script\n\nload script;ver");
    return 0;
}
