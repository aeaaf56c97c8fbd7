/**
 * @file working_folder.h
 * A working directory of a test's own.
 */
#ifndef WORKING_FOLDER_H
#define WORKING_FOLDER_H

#include <filesystem>

#include "scratch_folder.h"

/** A scratch folder that is the working directory while it lives. */
class WorkingFolder : public ScratchFolder
{
public:
    WorkingFolder() { std::filesystem::current_path(path("")); }
    ~WorkingFolder() { std::filesystem::current_path(before_); }

private:
    std::filesystem::path before_ = std::filesystem::current_path();
};

#endif
