// A card description: read, and where it is right, the cards fitted that it describes and commands run on each of them
// that reach all that can be described. What follows the text is in a file called "file", which the description may
// name. The reader is linked in; in the product it is a library that is loaded when a description is named.

#include <cstdlib>
#include <string>

#include "description/reader.h"
#include "path/driver_path.h"
#include "support/console.h"
#include "support/patient_board.h"
#include "support/require.h"
#include "support/sandbox.h"
#include "vek.h"

namespace
{

constexpr const char* kLines =
    "card;query;temp;volt;process;fan 50;power;clk;info\n"
    "ddc 0;ddc 1;ddc 2;ddc 3;hdmi 0 mode;hdmi 1 edid r;hdmi 0 hpd r;vga 0 mode;dvo 0 mode;crtc output;crtc 0 mode\n"
    "dp 0 init;dp 0 train;dp 0 config;dp 0 mode;dp 0 ddc;dp 0 aux rs 0 10\n"
    "dp 1 init;dp 1 train;dp 1 config;dp 1 mode;dp 1 ddc;dp 1 st 1\n"
    "i2c set 0 50;i2c rbs 0 40;i2c set 1 4c;i2c rb 0;i2c set 2 40;i2c rb ff;i2c set 3 24;i2c rb 1f\n"
    "ltc2990 1 0 7;ltc2990 1 0 6 3 3;ltc2991 1 0 0;ltc2991 1 0 1 5 5 5 5;ina3221 2 5 5\n"
    "zv init 0 0 0 0;zv start 0 0 0;zv info 0;zv init 1 1 1 0;zv start 1 0 0;mcu aux r 0;mcu i2c rs\n"
    "spi read 0 20;spi erase 0 1000;rrls 0 10;rwl 1000 ffffffff;rrl 1000;vwl 0 0;vrl 0;vrl fffffffc;dump vramfree";

}  // namespace

// In the place of the function that loads the reader.
extern "C" vek::ReadCardDescription* __wrap__ZN3vek21loadDescriptionReaderEv()
{
    return &vekReadCardDescription;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    setenv(VEK_CARD_DESCRIPTION_VARIABLE, "description", 1);
    static const std::string kTyped(8, 'q');
    const fuzz::TextAndAnswers input = fuzz::splitInput(data, size);
    const fuzz::Sandbox sandbox(kTyped);
    fuzz::Sandbox::addFile("description", std::span(data, input.text.size()));
    fuzz::Sandbox::addFile("file", input.answers);
    fuzz::expectMailboxAnswers();
    if (vekRwOpen(0) != VEK_OK) {
        return 0;
    }
    const int cards = vek::driverCards();
    fuzz::require(cards >= 1 && cards <= 4);
    for (int card = 0; card < cards; ++card) {
        fuzz::require(vekRwOpen(card) == VEK_OK);
        fuzz::runLines(kLines);
    }
    vekClose();
    return 0;
}
