// The kept state of a card, as anybody may have put it together who can write the file: bytes of a sound state are
// changed as the input says, the card takes it on if it finds that it holds together, and console lines run on it. The
// check sums of the file are left out: whoever can write the one can write the other.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "path/driver_path.h"
#include "path/fitted_card.h"
#include "serial/message.h"
#include "state/state_visitor.h"
#include "support/console.h"
#include "support/patient_board.h"
#include "support/require.h"
#include "support/sandbox.h"
#include "vek.h"

namespace
{

using Image = std::array<std::uint8_t, sizeof(vek::SimulatedCard) + sizeof(vek::DriverCore)>;

std::span<std::uint8_t> stateOf(const vek::FittedCard& fitted, Image& image)
{
    vek::StateVisitor measure;
    measure(*fitted.card, *fitted.driver);
    const auto room = std::span(image).first(measure.size());
    vek::StateVisitor copy = vek::StateVisitor::copyingTo(room);
    copy(*fitted.card, *fitted.driver);
    return room;
}

// Each change is a place, a number of bytes and the bytes.
void change(std::span<std::uint8_t> state, std::span<const std::uint8_t> changes)
{
    constexpr unsigned kMostBytes = 16;
    vek::MessageReader reader(changes);
    while (reader.sound() && !reader.rest().empty()) {
        std::size_t place = reader.take16();
        for (unsigned left = reader.take8() % kMostBytes + 1; left > 0; --left) {
            state[place++ % state.size()] = reader.take8();
        }
    }
}

// Whether the card is in that state now.
bool takeOn(const vek::FittedCard& fitted, std::span<const std::uint8_t> state)
{
    vek::StateVisitor copy = vek::StateVisitor::copyingFrom(state);
    copy(*fitted.card, *fitted.driver);
    return copy.sound();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const fuzz::TextAndAnswers input = fuzz::splitInput(data, size);
    if (input.answers.empty()) {
        return 0;
    }
    // Ends the live display however often the longest input asks for it.
    static const std::string kTyped(128, 'q');
    const int card = input.answers.front() % 2;
    const fuzz::Sandbox sandbox(kTyped);
    fuzz::expectMailboxAnswers();
    fuzz::require(vekRwOpen(card) == VEK_OK);
    const vek::FittedCard fitted = vek::fittedCard(card);
    Image image;
    const std::span<std::uint8_t> state = stateOf(fitted, image);
    change(state, input.answers.subspan(1));
    if (takeOn(fitted, state)) {
        fuzz::runLines(input.text);
    }
    vekClose();
    return 0;
}
