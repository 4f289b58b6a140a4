// Tables of test cases in JSON files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <windows.h>

/// Parses a file in the tests' folder, which ctest passes in the environment.
inline nlohmann::ordered_json ReadDataFile(const char* name)
{
    const wchar_t* folder = _wgetenv(L"TESTS_DIR");
    std::ifstream file(std::filesystem::path(folder ? folder : L".") / name);
    return nlohmann::ordered_json::parse(file);
}

inline std::wstring ToWide(const std::string& utf8)
{
    std::wstring wide(utf8.size(), L'\0');
    const int size = static_cast<int>(utf8.size());
    const int length =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}
