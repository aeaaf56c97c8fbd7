#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "api/driver_core.h"
#include "drivers/video_memory.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr std::uint64_t kMebibyte = 0x10'0000;
constexpr std::uint64_t kKibibyte = 1024;

void printFreeNodes(std::FILE* out, const VideoMemory& memory)
{
    unsigned count = 0;
    std::fputs("node          first           last          size\n", out);
    for (const MemoryNode& node : memory.nodes()) {
        if (!node.free) {
            continue;
        }
        const std::uint64_t first = node.firstPage * VideoMemory::kPageSize;
        const std::uint64_t bytes = node.pages * VideoMemory::kPageSize;
        std::fprintf(out, "%4u   0x%010" PRIx64 "   0x%010" PRIx64 " %10" PRIu64 " KB\n", count, first,
                     first + bytes - 1, bytes / kKibibyte);
        ++count;
    }
    std::fprintf(out, "total: %u %s, %" PRIu64 " of %" PRIu64 " KB free\n", count, count == 1 ? "node" : "nodes",
                 memory.freeBytes() / kKibibyte, memory.totalBytes() / kKibibyte);
}

}  // namespace
}  // namespace vek

int vekRvtcoreVer(int* major, int* minor, int* third, int* fourth)
{
    if (vek::openPath == nullptr) {
        return VEK_NO_PATH;
    }
    const vek::DriverCore* core = vek::openPath->driver;
    if (core == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    if (major == nullptr || minor == nullptr || third == nullptr || fourth == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    const vek::DriverVersion& version = core->version();
    *major = version.major;
    *minor = version.minor;
    *third = version.third;
    *fourth = version.fourth;
    return VEK_OK;
}

int vekInfoRead(gpu_info* info)
{
    const vek::CardHold hold(vek::openCardLock());
    const auto [found, core] = vek::findDriver();
    if (found != VEK_OK) {
        return found;
    }
    if (info == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    const auto total = static_cast<int32_t>(core->memory().totalBytes() / vek::kMebibyte);
    const auto free = static_cast<int32_t>(core->memory().freeBytes() / vek::kMebibyte);
    *info = {.reserved = 0, .used = total - free, .free = free, .total = total};
    return VEK_OK;
}

int vekDumpVramFree()
{
    std::optional<vek::VideoMemory> memory;
    {
        const vek::CardHold hold(vek::openCardLock());
        const auto [found, core] = vek::findDriver();
        if (found != VEK_OK) {
            return found;
        }
        memory = core->memory();
    }
    vek::printFreeNodes(stdout, *memory);
    return VEK_OK;
}
