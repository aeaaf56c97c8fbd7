/**
 * @file resident_memory.h
 * What the test process costs the host.
 */
#ifndef RESIDENT_MEMORY_H
#define RESIDENT_MEMORY_H

#include <unistd.h>

#include <fstream>

/** @return bytes of host memory that the process holds at the moment. */
inline long residentBytes()
{
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

#endif
