// The words of a legacy option-style command, one a line, the first being the program's name, over a library that
// answers whatever the input says.

#include "support/console.h"
#include "support/hostile_vek.h"
#include "support/sandbox.h"
#include "support/words.h"
#include "tovira_parse/legacy/option_commands.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const fuzz::TextAndAnswers input = fuzz::splitInput(data, size);
    fuzz::Words words(input.text);
    const fuzz::Sandbox sandbox;
    fuzz::answerFrom(input.answers);
    parseArg(words.count(), words.pointers());
    return 0;
}
