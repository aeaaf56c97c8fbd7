#ifndef VEK_PATH_SERIAL_PATH_H
#define VEK_PATH_SERIAL_PATH_H

#include "path/mem_path.h"

namespace vek
{

/// Opens a serial line and greets the board at its other end. What the board serves is on the path, the rest is null. A
/// line opened before is given up on success only. Results as of TtyPort::open() and SerialSession::begin();
/// VEK_BAD_ARGUMENT without a path.
OpenedPath openSerialPath(const char* path, int baudRate);

/// Gives up what openSerialPath() has opened; the line gets its settings back.
void closeSerialPath();

}  // namespace vek

#endif
