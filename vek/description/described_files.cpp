#include "description/described_files.h"

#include <cerrno>
#include <cstring>

#include "host_file.h"

namespace vek
{

FileContents readFile(const std::string& name, std::span<std::uint8_t> room)
{
    HostFile file = HostFile::openToRead(name.c_str());
    if (!file.isOpen()) {
        return {errno, 0};
    }
    const std::ptrdiff_t got = file.read(room.data(), room.size());
    if (got < 0) {
        return {errno, 0};
    }
    std::uint8_t more = 0;
    const bool longer = static_cast<std::size_t>(got) == room.size() && file.read(&more, 1) == 1;
    return {0, static_cast<std::size_t>(got) + (longer ? 1 : 0)};
}

std::string reasonFor(int error)
{
    // What HostFile says of anything that is neither a file nor a folder.
    return std::string("cannot be read: ") + (error == EINVAL ? "Not a regular file" : std::strerror(error));
}

std::string nameBeside(std::string_view description, const std::string& name)
{
    const std::size_t slash = description.rfind('/');
    if (name.front() == '/' || slash == std::string_view::npos) {
        return name;
    }
    return std::string(description.substr(0, slash + 1)) + name;
}

}  // namespace vek
