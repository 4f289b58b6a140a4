// Shared by the benchmark program and offline_curl.cpp.
#pragma once

#include <chrono>
#include <fstream>
#include <string>

/// Returns the time in microseconds, from a clock that the program and its DLLs share.
inline double Now()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::micro>(now).count();
}

/// Reads the reply of the service for benchmarks without a network.
inline std::string ReadReply()
{
    std::string reply;
    std::getline(std::ifstream("reply.json"), reply);
    return reply;
}
