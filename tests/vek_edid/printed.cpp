#include "printed.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "drivers/edid/edid.h"

std::string printed(std::span<const std::uint8_t> edid, bool withExtensions)
{
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const stream = open_memstream(&text, &size);
    if (stream == nullptr) {
        throw std::system_error(errno, std::generic_category(), "open_memstream");
    }
    vek::printEdid(stream, edid, withExtensions);
    std::fclose(stream);
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    return {text, size};
}
