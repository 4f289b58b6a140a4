#include "files.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <windows.h>

namespace language_file_tool {
namespace {

std::string Read(const Path& path, std::ios::openmode mode, const std::string& consequence)
{
    std::fstream file(path, mode | std::ios::binary);
    if (!file) {
        std::error_code ignored;
        const bool isFolder = std::filesystem::is_directory(path, ignored);
        const bool isThere = std::filesystem::exists(path, ignored);
        const char* what = isFolder ? " is a folder" : isThere ? " cannot be opened" : " does not exist";
        throw std::runtime_error(ToUtf8(path.native()) + what + consequence + ".");
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

std::string ReadFile(const Path& path)
{
    return Read(path, std::ios::in, "");
}

std::string ReadWritableFile(const Path& path)
{
    return Read(
        path, std::ios::in | std::ios::out,
        "; unless the library can open it for reading and writing, it shows its English texts");
}

void WriteFile(const Path& path, std::string_view bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    file.close();
    if (!file) {
        throw std::runtime_error(ToUtf8(path.native()) + " cannot be written.");
    }
}

std::optional<std::wstring> FromUtf8(std::string_view utf8)
{
    const int size = static_cast<int>(utf8.size());
    std::wstring wide(utf8.size(), L'\0');
    const int length =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, wide.data(), size);
    if (length == 0 && size != 0) {
        return std::nullopt;
    }
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

std::string ToUtf8(std::wstring_view wide)
{
    const int size = static_cast<int>(wide.size());
    std::string utf8(3 * wide.size(), '\0');
    const int length = WideCharToMultiByte(
        CP_UTF8, 0, wide.data(), size, utf8.data(), static_cast<int>(utf8.size()), nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(length));
    return utf8;
}

} // namespace language_file_tool
