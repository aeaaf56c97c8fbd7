/// Waits of a stated length.
#ifndef TOVIRA_PARSE_WAIT_H
#define TOVIRA_PARSE_WAIT_H

#include <cstdint>

/// Shows what was printed so far, wherever it goes, and waits, the whole time whatever signals come meanwhile.
void waitMicroseconds(std::uint32_t microseconds);

#endif
