#include "description/load_reader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdio>
#include <cstring>

namespace vek
{
namespace
{

using FileName = std::array<char, PATH_MAX>;

/// Where a program finds the libraries that are installed with it, from its own folder.
constexpr std::array<const char*, 2> kFoldersFromProgram{"", VEK_LIBRARIES_FROM_PROGRAMS "/"};

/// Replaces the last part of an absolute file name; false when there is no room.
bool putBeside(FileName& name, const char* folder)
{
    char* const slash = std::strrchr(name.data(), '/');
    if (slash == nullptr || name[0] != '/') {
        return false;
    }
    const auto room = static_cast<std::size_t>(name.data() + name.size() - (slash + 1));
    const int length = std::snprintf(slash + 1, room, "%s%s", folder, VEK_DESCRIPTION_LIBRARY);
    return length > 0 && static_cast<std::size_t>(length) < room;
}

/// The reader's name beside the shared library that this is part of; false when it is part of a program, or of a
/// library that was found by a relative name.
bool besideLibrary(FileName& name)
{
    Dl_info own{};
    if (dladdr(reinterpret_cast<const void*>(&loadDescriptionReader), &own) == 0 || own.dli_fname == nullptr ||
        own.dli_fname[0] != '/' || std::strlen(own.dli_fname) >= name.size()) {
        return false;
    }
    std::memcpy(name.data(), own.dli_fname, std::strlen(own.dli_fname) + 1);
    return putBeside(name, "");
}

bool besideProgram(FileName& name, const char* folder)
{
    const ssize_t length = readlink("/proc/self/exe", name.data(), name.size() - 1);
    if (length <= 0) {
        return false;
    }
    name[static_cast<std::size_t>(length)] = '\0';
    return putBeside(name, folder);
}

void* openReader()
{
    FileName name{};
    void* library = besideLibrary(name) ? dlopen(name.data(), RTLD_NOW | RTLD_LOCAL) : nullptr;
    for (const char* folder : kFoldersFromProgram) {
        if (library == nullptr && besideProgram(name, folder) && access(name.data(), F_OK) == 0) {
            library = dlopen(name.data(), RTLD_NOW | RTLD_LOCAL);
        }
    }
    return library;
}

}  // namespace

ReadCardDescription* loadDescriptionReader()
{
    static constinit ReadCardDescription* reader = nullptr;
    if (reader != nullptr) {
        return reader;
    }
    void* const library = openReader();
    if (library != nullptr) {
        reader = reinterpret_cast<ReadCardDescription*>(dlsym(library, VEK_DESCRIPTION_ENTRY));
    }
    if (reader == nullptr) {
        const char* const reason = dlerror();
        std::fprintf(stderr, "%s cannot be loaded: %s\n", VEK_DESCRIPTION_LIBRARY,
                     reason == nullptr ? "it is not beside libutil_vek.so" : reason);
    }
    return reader;
}

}  // namespace vek
