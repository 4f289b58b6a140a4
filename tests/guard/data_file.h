// Tables of cases that stand in JSON files beside the tests.
#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <windows.h>

inline nlohmann::json ReadDataFile(const std::string& name)
{
    std::ifstream file(name); // in the working directory
    return nlohmann::json::parse(file);
}

inline std::wstring Wide(const std::string& utf8)
{
    std::wstring wide(utf8.size(), L'\0');
    const int size = static_cast<int>(utf8.size());
    const int length =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}
