/// Files that commands read and write. The names come from whoever types, and the program runs as root: what may keep a
/// reader or writer waiting, or end it when the other end leaves, is refused, as FIFOs, sockets and directories are,
/// and so are links that a stranger may have laid (guarded_open.h).
#ifndef TOVIRA_PARSE_FILES_H
#define TOVIRA_PARSE_FILES_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "tovira_parse/heap.h"

/// Creates or truncates a file for raw output (mode "wb"). Null when that cannot be done; errno then tells why.
FILE* createFile(const char* name);

/// Closes what createFile gave and says so on standard error when not everything could be written to it.
void closeCreatedFile(FILE* file, const char* name);

/// Writes a file whole. Nothing happens without a name (null), and one that cannot be created is passed over in
/// silence: what it would hold has been shown already.
void saveFile(const char* name, const void* contents, std::size_t size);

/// The whole contents of a file, terminated with a NUL behind them.
struct FileText {
    HeapPointer<char> text;    ///< null when it could not be had
    bool outOfMemory = false;  ///< tells a failed allocation from a file that could not be opened or read
    std::size_t length = 0;    ///< bytes that the file had when it was opened
    std::size_t size = 0;      ///< bytes of it that were read: fewer when it was cut short meanwhile
};

/// Reads a file whole. On failure `text` is null and errno tells why: EFBIG for a file of more than `limit` bytes.
FileText readWholeFile(const char* name, std::size_t limit = SIZE_MAX);

#endif
