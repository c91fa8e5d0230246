#pragma once

// What the benchmark drivers measure with: resident memory and wall time.

#include <chrono>
#include <fstream>
#include <unistd.h>

inline double ResidentMegabytes()
{
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return double(resident) * double(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

inline double Milliseconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - since)
        .count();
}
