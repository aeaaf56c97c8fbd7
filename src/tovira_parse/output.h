/// Printing of what commands put together themselves, a line or more at a time.
#ifndef TOVIRA_PARSE_OUTPUT_H
#define TOVIRA_PARSE_OUTPUT_H

#include <sys/single_threaded.h>

#include <cstddef>
#include <cstdio>

/// Prints the text to standard output. It stays in one piece when a thread of the library prints at the same time;
/// while there is none, the stream's lock would cost more than the copy.
inline void printText(const char* begin, const char* end)
{
    const auto length = static_cast<std::size_t>(end - begin);
    if (__libc_single_threaded != 0) {
        fwrite_unlocked(begin, 1, length, stdout);
    } else {
        fwrite(begin, 1, length, stdout);
    }
}

#endif
