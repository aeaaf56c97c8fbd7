#ifndef VEK_DESCRIPTION_DESCRIBED_FILES_H
#define VEK_DESCRIPTION_DESCRIBED_FILES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vek
{

/// What came of reading a file.
struct FileContents {
    int error;         ///< errno, 0 when it was read.
    std::size_t size;  ///< Bytes read, one more than there is room for when the file is longer.
};

/// Reads a regular file into `room`. Nothing waits for another program, whatever the name turns out to be.
FileContents readFile(const std::string& name, std::span<std::uint8_t> room);

/// Why a file could not be read.
std::string reasonFor(int error);

/// The name of a file that a description names: relative to the folder of the description.
std::string nameBeside(std::string_view description, const std::string& name);

}  // namespace vek

#endif
