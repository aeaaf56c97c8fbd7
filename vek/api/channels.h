#ifndef VEK_API_CHANNELS_H
#define VEK_API_CHANNELS_H

#include <cstddef>
#include <type_traits>

#include "api/connection.h"
#include "vek.h"

namespace vek
{

/// A channel of the open path. The target has a meaning with VEK_OK only.
template <typename Target>
struct FoundChannel {
    int result;
    Target* target;
};

/// Finds one of the open path's channels `Kind` (a member of AccessPath). `missing` is the result for a channel that
/// the card does not have.
template <auto Kind>
auto findChannel(int channel, int missing)
{
    using Found =
        FoundChannel<std::remove_pointer_t<typename std::remove_cvref_t<decltype(openPath->*Kind)>::value_type>>;
    if (openPath == nullptr) {
        return Found{VEK_NO_PATH, nullptr};
    }
    const auto& channels = openPath->*Kind;
    if (channels[0] == nullptr) {
        return Found{VEK_NOT_AVAILABLE, nullptr};
    }
    const auto index = static_cast<std::size_t>(channel);
    if (channel < 0 || index >= channels.size() || channels[index] == nullptr) {
        return Found{missing, nullptr};
    }
    return Found{VEK_OK, channels[index]};
}

}  // namespace vek

#endif
