#include "drivers/ddc_edid.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <span>

#include "api/channels.h"
#include "api/last_edid.h"
#include "drivers/edid/edid.h"
#include "host_file.h"
#include "vek.h"

namespace vek
{
namespace
{

int failParse(const char* subject, const char* reason, int result)
{
    std::fprintf(stderr, "%s: %s\n", subject, reason);
    return result;
}

int parseLast()
{
    if (openPath == nullptr) {
        return failParse("edid", "no card is open", VEK_NO_PATH);
    }
    if (lastEdid().empty()) {
        return failParse("edid", "none has been read yet", VEK_NOT_AVAILABLE);
    }
    printEdid(stdout, lastEdid(), true);
    return VEK_OK;
}

int parseFile(const char* path)
{
    HostFile file = HostFile::openToRead(path);
    if (!file.isOpen()) {
        return failParse(path, std::strerror(errno), VEK_IO_ERROR);
    }
    EdidBuffer bytes;
    const std::ptrdiff_t length = file.read(bytes.data(), bytes.size());
    if (length < 0) {
        return failParse(path, std::strerror(errno), VEK_IO_ERROR);
    }
    if (length == 0) {
        return failParse(path, "the file is empty", VEK_BAD_DATA);
    }
    printEdid(stdout, std::span(bytes).first(static_cast<std::size_t>(length)), true);
    return VEK_OK;
}

}  // namespace
}  // namespace vek

int vekDDCRead(int channel, int* length, uint8_t** data, int* valid)
{
    const auto [found, bus] = vek::findChannel<&vek::AccessPath::ddc>(channel, VEK_BAD_ARGUMENT);
    if (found != VEK_OK) {
        return found;
    }
    if (length == nullptr || data == nullptr || valid == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    const int result = vek::fetchEdid(*bus);
    if (result == VEK_OK) {
        const auto edid = vek::lastEdid();
        *length = static_cast<int>(edid.size());
        *data = edid.data();
        *valid = vek::checkEdid(edid).valid() ? 1 : 0;
    }
    return result;
}

int edid_print_helper(const uint8_t* data, int length, int flag)
{
    if (data == nullptr || length <= 0) {
        return VEK_BAD_ARGUMENT;
    }
    const std::size_t looked = std::min(static_cast<std::size_t>(length), vek::kMaxEdidSize);
    vek::printEdid(stdout, {data, looked}, flag != 0);
    return VEK_OK;
}

int do_edid_parse(const char* path)
{
    return path == nullptr ? vek::parseLast() : vek::parseFile(path);
}
