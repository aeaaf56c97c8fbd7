/**
 * @file scratch_folder.h
 * A folder for the files of one test.
 */
#ifndef SCRATCH_FOLDER_H
#define SCRATCH_FOLDER_H

#include <string>

/** An empty folder that is removed with what is in it. */
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /** @return the full name of a file in the folder. */
    std::string path(const std::string& name) const { return folder_ + "/" + name; }

    /** Creates a file with the given bytes. @return its full name. */
    std::string write(const std::string& name, const std::string& bytes) const;

    /** @return the bytes of a file in the folder. */
    std::string read(const std::string& name) const;

private:
    std::string folder_;
};

#endif
