#include "api/connection.h"

#include <strings.h>

#include <array>
#include <atomic>
#include <cstdio>

#include "path/driver_path.h"
#include "path/mem_path.h"
#include "path/serial_path.h"
#include "vek.h"

namespace vek
{

constinit const AccessPath* openPath = nullptr;

namespace
{

struct GpuType {
    char name[8];
    unsigned deviceId;
};

constexpr std::array<GpuType, 6> kGpuTypes{{
    {"QZ201", VEK_DEVICE_QZ201},
    {"QZ202", VEK_DEVICE_QZ202},
    {"201", VEK_DEVICE_QZ201},
    {"202", VEK_DEVICE_QZ202},
    {"0x201", VEK_DEVICE_QZ201},
    {"0x202", VEK_DEVICE_QZ202},
}};

/// What opening a path by hand answers. Above 0: for the console, 0 stands for nothing opened yet.
constexpr int kOpened = 1;

/// The id set with doGetDeviceId(), 0 until then.
constinit unsigned assumedDeviceId = 0;

/// Only the calling thread changes the path, so it may look at it as it likes; others look meanwhile.
void setOpenPath(const AccessPath* path)
{
    std::atomic_ref(openPath).store(path, std::memory_order_release);
}

}  // namespace

const AccessPath* openPathFromAnyThread()
{
    return std::atomic_ref(openPath).load(std::memory_order_acquire);
}

}  // namespace vek

using vek::openPath;

int vekRwOpen(int card)
{
    const auto [result, path] = vek::openDriverPath(card);
    if (result != VEK_OK) {
        return result;
    }
    vek::setOpenPath(path);
    vek::closeMemPath();
    vek::closeSerialPath();
    return VEK_OK;
}

int vekMemOpen(uint64_t reg_start, uint64_t reg_size, uint64_t vram_start, uint64_t vram_size)
{
    const auto [result, path] = vek::openMemPath({reg_start, reg_size}, {vram_start, vram_size});
    if (result != VEK_OK) {
        return result;
    }
    vek::setOpenPath(path);
    vek::closeSerialPath();
    return vek::kOpened;
}

int vekSerialOpen(const char* path, int baud_rate)
{
    const auto [result, opened] = vek::openSerialPath(path, baud_rate);
    if (result != VEK_OK) {
        return result;
    }
    vek::setOpenPath(opened);
    vek::closeMemPath();
    return vek::kOpened;
}

int vekClose()
{
    vek::setOpenPath(nullptr);
    vek::closeMemPath();
    vek::closeSerialPath();
    return VEK_OK;
}

int get_s_type()
{
    return openPath == nullptr ? VEK_NO_PATH : static_cast<int>(openPath->mode);
}

unsigned int get_device_id()
{
    if (vek::assumedDeviceId != 0) {
        return vek::assumedDeviceId;
    }
    return openPath == nullptr ? 0 : openPath->deviceId;
}

int doGetDeviceId(const char* program_name, const char* gpu_type)
{
    if (gpu_type != nullptr) {
        for (const vek::GpuType& type : vek::kGpuTypes) {
            if (strcasecmp(gpu_type, type.name) == 0) {
                vek::assumedDeviceId = type.deviceId;
                return VEK_OK;
            }
        }
    }
    std::fprintf(stderr, "%s: unknown gpu type, it may be QZ201, QZ202, 201, 202, 0x201 or 0x202\n",
                 program_name == nullptr ? "vek" : program_name);
    return VEK_BAD_ARGUMENT;
}

int vekGetCard()
{
    return openPath == nullptr ? VEK_NO_PATH : openPath->card;
}

int vekSetCard(int card)
{
    if (openPath == nullptr) {
        return VEK_NO_PATH;
    }
    return openPath->driver == nullptr ? VEK_NOT_AVAILABLE : vekRwOpen(card);
}
