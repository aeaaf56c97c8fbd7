/**
 * @file scratch.h
 * A folder for a test, and files in it that belong to others.
 */
#ifndef SCRATCH_H
#define SCRATCH_H

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

/** The user and the group that own nothing. */
inline constexpr unsigned kNobody = 65534;

/** An empty folder, which everybody may pass through, that lives as long as this object. */
class Scratch
{
public:
    Scratch() : path_(testing::TempDir() + "binaries-XXXXXX")
    {
        if (mkdtemp(path_.data()) == nullptr || chmod(path_.c_str(), 0755) != 0) {
            throw std::runtime_error("cannot create " + path_);
        }
    }
    ~Scratch()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

    /** A file of these bytes. @return its path */
    std::string file(const std::string& name, const std::string& contents) const
    {
        std::ofstream stream(*this / name, std::ios::binary);
        if (!(stream << contents).flush()) {
            throw std::runtime_error("cannot write " + name);
        }
        return *this / name;
    }

    /** A folder as /tmp is one, but owned by a user who owns nothing else. @return its path */
    std::string sharedFolder(const std::string& name) const
    {
        const std::string folder = *this / name;
        std::filesystem::create_directory(folder);
        if (chown(folder.c_str(), kNobody, kNobody) != 0 || chmod(folder.c_str(), 01777) != 0) {
            throw std::runtime_error("cannot give away " + folder);
        }
        return folder;
    }

    static std::string contents(const std::string& path)
    {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /** A symbolic link that belongs to a user. */
    static void link(const std::string& target, const std::string& path, unsigned owner)
    {
        std::filesystem::create_symlink(target, path);
        if (lchown(path.c_str(), owner, owner) != 0) {
            throw std::runtime_error("cannot give away " + path);
        }
    }

private:
    std::string path_;
};

/** Rights are tested as root only: nobody else can play two users. */
#define SKIP_UNLESS_ROOT()                                                          \
    if (geteuid() != 0) {                                                           \
        GTEST_SKIP() << "NOT TESTED: this needs root, to play more users than one"; \
    }                                                                               \
    static_assert(true)

#endif
