// Where a test may leave files.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <windows.h>

/// Writes the units of `characters`, and then `rest`.
inline void WriteFile(
    const std::filesystem::path& path, const std::wstring& characters, const std::string& rest = {})
{
    const std::string bytes(reinterpret_cast<const char*>(characters.data()), characters.size() * 2);
    std::ofstream(path, std::ios::binary) << bytes << rest;
}

/// A new folder below the working directory, which it is itself while it lives. Goes with all that is in it.
class TestFolder
{
public:
    TestFolder()
    {
        static int count = 0;
        const std::string name = std::to_string(GetCurrentProcessId()) + "." + std::to_string(++count);
        m_folder = m_former / ("test-folder." + name);
        std::filesystem::remove_all(m_folder); // of a run that crashed
        std::filesystem::create_directory(m_folder);
        std::filesystem::current_path(m_folder);
    }

    ~TestFolder()
    {
        std::error_code ignored;
        std::filesystem::current_path(m_former, ignored);
        std::filesystem::remove_all(m_folder, ignored);
    }

private:
    std::filesystem::path m_former = std::filesystem::current_path();
    std::filesystem::path m_folder;
};
