// The console runs as many accesses as a count says, up to 2^31 - 1 of them, which is an hour for one input. Linked
// with
// --wrap for the function that counts are read with, this keeps what is above kMostItems to its low bits. Counts below
// 0 and those that need no access each are as they were typed.

#include <cstdint>

namespace
{

constexpr std::int32_t kMostItems = 0x1000;

}  // namespace

extern "C" {

std::int32_t __real__Z6htoi32PKc(const char* text);

std::int32_t __wrap__Z6htoi32PKc(const char* text)
{
    const std::int32_t number = __real__Z6htoi32PKc(text);
    return number > kMostItems ? number % kMostItems : number;
}

}  // extern "C"
