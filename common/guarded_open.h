/// How the console and the library open files whose names someone has typed.
#ifndef COMMON_GUARDED_OPEN_H
#define COMMON_GUARDED_OPEN_H

#include <sys/types.h>

namespace guarded
{

/// open(2), but for symbolic links that a stranger may have laid for a program that runs as root: in a folder that
/// everybody may write to and whose sticky bit keeps what others own, as in /tmp, a link that belongs neither to this
/// process's effective user nor to root is refused with EACCES, wherever on the way to the file it lies and whether or
/// not the kernel is set to refuse it. The links of /proc to open files are followed as usual.
///
/// @param name   path of the file
/// @param flags  as open(2) takes them, O_CREAT among them
/// @param mode   of a file that is created, less the bits of the umask
/// @return a descriptor, which the caller closes, or -1 with errno set
int open(const char* name, int flags, mode_t mode);

}  // namespace guarded

#endif
