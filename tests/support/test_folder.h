// Where a test may leave files.
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <windows.h>

/// A new folder below the working directory, which it is itself while it lives. Goes with all that is in it.
class TestFolder
{
public:
    TestFolder()
    {
        static int count = 0;
        const std::string name = std::to_string(GetCurrentProcessId()) + "." + std::to_string(++count);
        m_folder = m_former / ("test-folder." + name);
        EXPECT_TRUE(std::filesystem::create_directory(m_folder)) << m_folder << " is not new";
        std::filesystem::current_path(m_folder);
    }

    ~TestFolder()
    {
        std::error_code ignored;
        std::filesystem::current_path(m_former, ignored);
        std::filesystem::remove_all(m_folder, ignored);
    }

    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

private:
    std::filesystem::path m_former = std::filesystem::current_path();
    std::filesystem::path m_folder;
};
