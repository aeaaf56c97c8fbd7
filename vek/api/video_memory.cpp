#include <algorithm>
#include <array>

#include "address_space.h"
#include "api/items.h"
#include "api/long_dump.h"
#include "host_file.h"
#include "vek.h"

namespace vek
{
namespace
{

/// Longs moved between a file and video memory at a time.
using Chunk = std::array<std::uint32_t, 16384>;

/// The open path's video memory for a run of `count` longs, or the result to answer with instead.
int videoMemoryForRun(int count, BlockSpace*& memory)
{
    if (openPath == nullptr) {
        return VEK_NO_PATH;
    }
    if (openPath->videoMemory == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    if (count < 0) {
        return VEK_BAD_ARGUMENT;
    }
    memory = openPath->videoMemory;
    return VEK_OK;
}

/// Of the results of one job's steps, the one to report: that of the first step that failed.
int firstFailure(int earlier, int later)
{
    return earlier < 0 ? earlier : later;
}

/// The address of the next chunk. Past the last address there is nothing more, and it does not go round to 0.
std::uint64_t advanced(std::uint64_t address, std::size_t longs)
{
    const std::uint64_t step = longs * sizeof(std::uint32_t);
    return step > kAllOnes - address ? kAllOnes : address + step;
}

int saveLongs(BlockSpace& memory, std::uint64_t address, std::size_t count, const char* name)
{
    HostFile file = HostFile::openToWrite(name);
    if (!file.isOpen()) {
        return VEK_IO_ERROR;
    }
    Chunk chunk;
    int result = VEK_OK;
    while (count > 0) {
        const std::size_t step = std::min(count, chunk.size());
        const int read = memory.readLongs(address, chunk.data(), step);
        if (read != VEK_OK && read != VEK_NO_RESPONSE) {
            return read;
        }
        result = firstFailure(result, read);
        if (!file.write(chunk.data(), step * sizeof chunk[0])) {
            return VEK_IO_ERROR;
        }
        address = advanced(address, step);
        count -= step;
    }
    return file.close() ? result : VEK_IO_ERROR;
}

int loadLongs(BlockSpace& memory, std::uint64_t address, std::size_t count, const char* name)
{
    HostFile file = HostFile::openToRead(name);
    if (!file.isOpen()) {
        return VEK_IO_ERROR;
    }
    Chunk chunk;
    int result = VEK_OK;
    while (count > 0) {
        const std::size_t step = std::min(count, chunk.size());
        const std::ptrdiff_t bytes = file.read(chunk.data(), step * sizeof chunk[0]);
        if (bytes < 0) {
            return VEK_IO_ERROR;
        }
        const std::size_t longs = static_cast<std::size_t>(bytes) / sizeof chunk[0];
        result = firstFailure(result, memory.writeLongs(address, chunk.data(), longs));
        if (longs < step) {
            return firstFailure(result, VEK_BAD_DATA);
        }
        address = advanced(address, step);
        count -= step;
    }
    return result;
}

}  // namespace
}  // namespace vek

int vekVramReadByte(uint64_t address, uint8_t* value)
{
    return vek::readItem<&vek::AccessPath::videoMemory>(address, value);
}

int vekVramReadWord(uint64_t address, uint16_t* value)
{
    return vek::readItem<&vek::AccessPath::videoMemory>(address, value);
}

int vekVramReadLong(uint64_t address, uint32_t* value)
{
    return vek::readItem<&vek::AccessPath::videoMemory>(address, value);
}

int vekVramReadQuad(uint64_t address, uint64_t* value)
{
    return vek::readItem<&vek::AccessPath::videoMemory>(address, value);
}

int vekVramWriteByte(uint64_t address, uint8_t value)
{
    return vek::writeItem<&vek::AccessPath::videoMemory>(address, value);
}

int vekVramWriteWord(uint64_t address, uint16_t value)
{
    return vek::writeItem<&vek::AccessPath::videoMemory>(address, value);
}

int vekVramWriteLong(uint64_t address, uint32_t value)
{
    return vek::writeItem<&vek::AccessPath::videoMemory>(address, value);
}

int vekVramWriteQuad(uint64_t address, uint64_t value)
{
    return vek::writeItem<&vek::AccessPath::videoMemory>(address, value);
}

int vekMultiVramReadLong(uint32_t* buffer, uint64_t address, int count, const char* file)
{
    vek::BlockSpace* memory = nullptr;
    const int result = vek::videoMemoryForRun(count, memory);
    if (result != VEK_OK) {
        return result;
    }
    if ((buffer == nullptr) == (file == nullptr)) {
        return VEK_BAD_ARGUMENT;
    }
    const auto longs = static_cast<std::size_t>(count);
    return buffer != nullptr ? memory->readLongs(address, buffer, longs)
                             : vek::saveLongs(*memory, address, longs, file);
}

int vekMultVramWriteLong(uint32_t value, uint64_t address, int count, const char* file)
{
    vek::BlockSpace* memory = nullptr;
    const int result = vek::videoMemoryForRun(count, memory);
    if (result != VEK_OK) {
        return result;
    }
    const auto longs = static_cast<std::size_t>(count);
    return file == nullptr ? memory->fillLongs(address, value, longs) : vek::loadLongs(*memory, address, longs, file);
}

int dump_vram(const void* buffer, int item_size, uint64_t address, int count)
{
    if (buffer == nullptr || item_size != static_cast<int>(sizeof(uint32_t)) || count < 0) {
        return VEK_BAD_ARGUMENT;
    }
    vek::dumpLongs(static_cast<const unsigned char*>(buffer), address, static_cast<std::size_t>(count));
    return VEK_OK;
}
