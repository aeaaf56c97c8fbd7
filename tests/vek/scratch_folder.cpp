#include "scratch_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

ScratchFolder::ScratchFolder() : folder_((std::filesystem::temp_directory_path() / "vek-test-XXXXXX").string())
{
    if (mkdtemp(folder_.data()) == nullptr) {
        throw std::runtime_error("cannot create " + folder_);
    }
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string ScratchFolder::write(const std::string& name, const std::string& bytes) const
{
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
}

std::string ScratchFolder::read(const std::string& name) const
{
    std::ifstream file(path(name), std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path(name));
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
