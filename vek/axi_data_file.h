#ifndef VEK_AXI_DATA_FILE_H
#define VEK_AXI_DATA_FILE_H

#include <string_view>

namespace vek
{

/// The files that transaction counts are collected into, by their descriptors: a collector that is cancelled runs no
/// destructors. Opening neither follows a symbolic link nor waits for another program, and refuses whatever is no
/// regular file. A file that is there already is emptied.

/// Opens the file "axiMonitorData" in the working directory. Returns its descriptor, or -1.
int openAxiData();

/// Opens the file "axiMonitorData" in a folder of the working directory, which is created with the user's umask when
/// there is none. Returns its descriptor, or -1, without having created anything when the name is null or empty, longer
/// than 31 characters, ".", ".." or has a '/' in it.
int openAxiDataIn(const char* folderName);

/// Appends whole lines; when not all of them can be written, none is. Returns whether they were written.
bool appendLines(int descriptor, std::string_view lines);

}  // namespace vek

#endif
