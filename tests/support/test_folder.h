// A folder for the files of a test.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <windows.h>

/// Writes `characters` as UTF-16, and then `rest`.
inline void WriteFile(
    const std::filesystem::path& path, const std::wstring& characters, const std::string& rest = {})
{
    const std::string bytes(reinterpret_cast<const char*>(characters.data()), characters.size() * 2);
    std::ofstream(path, std::ios::binary) << bytes << rest;
}

/// Creates a folder in the working directory and makes it the working directory. The destructor changes back
/// and removes the folder with its contents.
class TestFolder
{
public:
    TestFolder()
    {
        static int count = 0;
        const std::string name = std::to_string(GetCurrentProcessId()) + "." + std::to_string(++count);
        m_folder = m_previous / ("test-folder." + name);
        std::filesystem::remove_all(m_folder); // left by a run that crashed
        std::filesystem::create_directory(m_folder);
        std::filesystem::current_path(m_folder);
    }

    ~TestFolder()
    {
        std::error_code ignored;
        std::filesystem::current_path(m_previous, ignored);
        std::filesystem::remove_all(m_folder, ignored);
    }

private:
    std::filesystem::path m_previous = std::filesystem::current_path();
    std::filesystem::path m_folder;
};
