// What the program and the stand-in for libcurl share.
#pragma once

#include <chrono>
#include <fstream>
#include <string>

/// Microseconds, by one clock for the program and its DLLs.
inline double Now()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::micro>(now).count();
}

/// The reply of the service that there is without a network.
inline std::string ReadReply()
{
    std::string reply;
    std::getline(std::ifstream("reply.json"), reply);
    return reply;
}
