/**
 * @file program_support.h
 * Runs the finished program: on our own device-access library and its simulated card, or on the recording stand-in,
 * which is put in its place the way another maker's library would be.
 */
#ifndef PROGRAM_SUPPORT_H
#define PROGRAM_SUPPORT_H

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "child_process.h"

namespace program_test
{

using Arguments = std::vector<std::string>;
using Variables = std::map<std::string, std::string>;

/** The program's path, which is also the name that it shows in its usage text. */
std::string programPath();

/** The usage text. */
std::string usageText();

/** An empty folder that lives as long as this object. */
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    void writeFile(const std::string& name, std::string_view contents) const;
    std::string readFile(const std::string& name) const;
    bool holds(const std::string& name) const { return std::filesystem::exists(path_ / name); }

private:
    std::filesystem::path path_;
};

/** Runs the program in a folder, on our own library. */
child_process::Result runOnCard(const Arguments& arguments, const std::filesystem::path& folder);

/** What a run on the recording library did. */
struct RecordedRun {
    child_process::Result result;
    std::vector<std::string> calls;
};

/** Runs the program on the recording library. `variables` steer that library, without their prefix RECORDING_VEK_. */
RecordedRun runRecorded(const Arguments& arguments, const Variables& variables = {}, const std::string& input = "");

}  // namespace program_test

#endif
