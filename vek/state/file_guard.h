#ifndef VEK_STATE_FILE_GUARD_H
#define VEK_STATE_FILE_GUARD_H

#include <array>
#include <atomic>
#include <cstddef>

#include "address_space.h"

namespace vek
{

/// What has become of the mapped files of a card. A file that somebody cuts short, or for which the disk has no room
/// left, takes pages away from under the program, and so does a device that is unplugged.
struct FileLoss {
    const char* folder = "";  ///< Of the card's files, or what the file holds that has no name, for the message.
    const char* consequence = "a part cannot be reached any more; the card is no longer kept";  ///< For the message.
    std::atomic<bool> lost = false;  ///< Some contents are gone: what is read may be 0 and what is written is not kept.
    std::array<AddressSpace*, 4> exposing{};  ///< Spaces that give away plain memory; they do not once it is lost.
};

/// Watches a mapping of a file. A page of it that the host cannot provide is replaced by one of zeros, which nobody
/// else sees; `loss` then says so, and a line on standard error too, with the name of the file. Faults elsewhere go
/// where they went before. `name`, which may be null, and `loss` have to live as long as the program. Returns false
/// when there is no room for it.
bool guardMapping(unsigned char* base, std::size_t length, const char* name, FileLoss& loss);

/// Stops watching the mappings of `loss`.
void forgetMappings(const FileLoss& loss);

}  // namespace vek

#endif
