#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

// Files, and UTF-8. What fails throws std::runtime_error with a sentence for the user, in UTF-8.
namespace language_file_tool {

using Path = std::filesystem::path;

std::string ReadFile(const Path& path);

/// Reads a file that must be writable too, as the library wants it of language files.
std::string ReadWritableFile(const Path& path);

void WriteFile(const Path& path, std::string_view bytes);

/// Nothing where `utf8` is malformed. Unlike the library's conversion, which is for what the service sends,
/// this takes every character of Unicode.
std::optional<std::wstring> FromUtf8(std::string_view utf8);
std::string ToUtf8(std::wstring_view wide);

} // namespace language_file_tool
