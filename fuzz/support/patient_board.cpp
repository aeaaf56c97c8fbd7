// The console waits for the board's microcontroller without an end, as it has to. Linked with --wrap for the function
// that it looks at the mailbox with, this lets one that does not answer do so after a number of looks.

#include <cstdint>

#include "support/patient_board.h"

namespace
{

constexpr std::uint64_t kMailboxCompletion = 0x3ff1c;
constexpr std::uint32_t kMailboxCompleted = 0x55aa55aa;
constexpr unsigned kLooksBeforeAnswer = 1000;

unsigned looks = 0;

}  // namespace

namespace fuzz
{

void expectMailboxAnswers()
{
    looks = 0;
}

}  // namespace fuzz

extern "C" {

int __real_vekRegReadLong(std::uint64_t address, std::uint32_t* value);

int __wrap_vekRegReadLong(std::uint64_t address, std::uint32_t* value)
{
    const int result = __real_vekRegReadLong(address, value);
    if (address == kMailboxCompletion && ++looks > kLooksBeforeAnswer) {
        *value = kMailboxCompleted;
    }
    return result;
}

}  // extern "C"
