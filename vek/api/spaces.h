#ifndef VEK_API_SPACES_H
#define VEK_API_SPACES_H

#include "api/channels.h"
#include "api/connection.h"
#include "vek.h"

namespace vek
{

/// Finds the open path's space `Space` (a member of AccessPath).
template <auto Space>
FoundChannel<AddressSpace> findSpace()
{
    if (openPath == nullptr) {
        return {VEK_NO_PATH, nullptr};
    }
    AddressSpace* space = openPath->*Space;
    return {space == nullptr ? VEK_NOT_AVAILABLE : VEK_OK, space};
}

}  // namespace vek

#endif
