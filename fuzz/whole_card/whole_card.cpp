// Console lines over our own library, in one process. The byte behind the text chooses what is open at the beginning:
// one of the simulated cards, or a file that is mapped in the place of physical memory. What follows the byte is in a
// file called "file".

#include <array>
#include <cstdlib>
#include <string>

#include "support/console.h"
#include "support/patient_board.h"
#include "support/require.h"
#include "support/sandbox.h"
#include "vek.h"

namespace
{

enum class Opened { kFirstCard, kSecondCard, kMappedFile };
constexpr std::uint8_t kOpened = 3;

void openMappedFile()
{
    constexpr std::uint64_t kWindow = 0x2000;
    static constexpr std::array<std::uint8_t, 2 * kWindow> kContents{};
    fuzz::Sandbox::addFile("memory", kContents);
    setenv("VEK_MEM_DEVICE", "memory", 1);
    fuzz::require(vekMemOpen(0, kWindow, kWindow, kWindow) > 0);
}

void open(Opened what)
{
    if (what == Opened::kMappedFile) {
        openMappedFile();
    } else {
        fuzz::require(vekRwOpen(what == Opened::kSecondCard ? 1 : 0) == VEK_OK);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Ends the live display however often it is asked for, after it has been drawn.
    static const std::string kTyped = [] {
        std::string keys;
        for (int i = 0; i < 200; ++i) {
            keys += "xq";
        }
        return keys;
    }();
    const fuzz::TextAndAnswers input = fuzz::splitInput(data, size);
    const auto what = static_cast<Opened>(input.answers.empty() ? 0 : input.answers.front() % kOpened);
    const fuzz::Sandbox sandbox(kTyped);
    if (input.answers.size() > 1) {
        fuzz::Sandbox::addFile("file", input.answers.subspan(1));
    }
    fuzz::expectMailboxAnswers();
    open(what);
    fuzz::runLines(input.text);
    vekClose();
    return 0;
}
