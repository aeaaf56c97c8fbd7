#include "path/mem_path.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "path/mapped_memory.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr const char* kMemoryDevice = "/dev/mem";
constexpr const char* kDeviceVariable = "VEK_MEM_DEVICE";

constinit MappedMemory mappedRegisters;
constinit MappedMemory mappedVideoMemory;
constinit AccessPath memPath{};

int openMemoryDevice()
{
    const char* const other = secure_getenv(kDeviceVariable);
    return open(other == nullptr ? kMemoryDevice : other, O_RDWR | O_SYNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
}

int mapRange(MappedMemory& memory, int device, const PhysicalRange& range)
{
    return range.size == 0 ? VEK_OK : memory.map(device, range.start, range.size);
}

/// Maps both ranges, or none.
int mapRanges(int device, const PhysicalRange& registers, const PhysicalRange& videoMemory)
{
    MappedMemory newRegisters;
    MappedMemory newVideoMemory;
    int result = mapRange(newRegisters, device, registers);
    if (result == VEK_OK) {
        result = mapRange(newVideoMemory, device, videoMemory);
    }
    if (result != VEK_OK) {
        newRegisters.unmap();
        return result;
    }
    mappedRegisters.takeFrom(newRegisters, "mapped registers");
    mappedVideoMemory.takeFrom(newVideoMemory, "mapped video memory");
    return VEK_OK;
}

}  // namespace

OpenedPath openMemPath(const PhysicalRange& registers, const PhysicalRange& videoMemory)
{
    if (registers.size == 0 && videoMemory.size == 0) {
        return {VEK_BAD_ARGUMENT, nullptr};
    }
    const int device = openMemoryDevice();
    if (device < 0) {
        return {VEK_IO_ERROR, nullptr};
    }
    const int result = mapRanges(device, registers, videoMemory);
    // The mappings stay without it.
    close(device);
    if (result != VEK_OK) {
        return {result, nullptr};
    }
    memPath.mode = VEK_ACCESS_MEM;
    memPath.registers = mappedRegisters.mapped() ? &mappedRegisters : nullptr;
    memPath.registerRegion = memPath.registers;
    memPath.videoMemory = mappedVideoMemory.mapped() ? &mappedVideoMemory : nullptr;
    return {VEK_OK, &memPath};
}

void closeMemPath()
{
    mappedRegisters.unmap();
    mappedVideoMemory.unmap();
}

}  // namespace vek
