// Console lines over our own library and its simulated cards, in one process. The byte behind the text chooses the card
// that is open at the beginning.

#include "support/console.h"
#include "support/patient_board.h"
#include "support/require.h"
#include "support/sandbox.h"
#include "vek.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Ends the live display however often it is asked for.
    static constexpr std::string_view kTyped =
        "qqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqq"
        "qqqqqq"
        "qqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqq"
        "qqqqqq";
    const fuzz::TextAndAnswers input = fuzz::splitInput(data, size);
    const bool secondCard = !input.answers.empty() && input.answers.front() % 2 != 0;
    const fuzz::Sandbox sandbox(kTyped);
    fuzz::expectMailboxAnswers();
    fuzz::require(vekRwOpen(secondCard ? 1 : 0) == VEK_OK);
    fuzz::runLines(input.text);
    vekClose();
    return 0;
}
