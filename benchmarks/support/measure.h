// What the benchmark programs share. Each prints lines "SERIES NUMBER" that run.py reads.
#pragma once

#include <cstdio>
#include <windows.h>

/// Microseconds on a clock of this process.
inline double Now()
{
    LARGE_INTEGER count;
    LARGE_INTEGER perSecond;
    QueryPerformanceCounter(&count);
    QueryPerformanceFrequency(&perSecond);
    return static_cast<double>(count.QuadPart) * 1e6 / static_cast<double>(perSecond.QuadPart);
}

template <typename Work>
double Duration(const Work& work)
{
    const double start = Now();
    work();
    return Now() - start;
}

inline void Print(const char* series, double value)
{
    std::printf("%s %.1f\n", series, value);
}
