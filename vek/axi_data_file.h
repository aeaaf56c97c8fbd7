#ifndef VEK_AXI_DATA_FILE_H
#define VEK_AXI_DATA_FILE_H

#include <string_view>

namespace vek
{

/// The files that transaction counts are collected into, by their descriptors: a collector that is cancelled runs no
/// destructors. A new file takes the place of one that is there already, with its first line in it from the first
/// moment. What is there is left alone, and nothing created, when it is a symbolic link, a file with several names or
/// no regular file.

/// Creates the file "axiMonitorData" in the working directory with one whole line. Returns its descriptor, or -1.
int createAxiData(std::string_view firstLine);

/// Creates the file "axiMonitorData" with one whole line in a folder of the working directory, which is created with
/// the user's umask when there is none. Returns its descriptor, or -1, without having created anything when the name is
/// null or empty, longer than 31 characters, ".", ".." or has a '/' in it.
int createAxiDataIn(const char* folderName, std::string_view firstLine);

/// Appends whole lines; when not all of them can be written, none is. Returns whether they were written.
bool appendLines(int descriptor, std::string_view lines);

}  // namespace vek

#endif
