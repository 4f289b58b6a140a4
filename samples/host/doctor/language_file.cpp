#include "checks.h"
#include "text/language_code.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <windows.h>

namespace doctor {
namespace {

constexpr std::size_t Lines = 88;
constexpr DWORD LargestFile = 64 << 20;

struct Closed
{
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using File = std::unique_ptr<void, Closed>;

std::wstring WholePath(const std::wstring& path)
{
    std::wstring whole(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    whole.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr));
    return whole;
}

// Opened as the library does, for writing too; nothing is written.
HANDLE OpenAsTheLibrary(const std::wstring& path)
{
    return CreateFileW(
        path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::wstring OpenFailure(DWORD error)
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return L"is not there, so English shows: ";
    case ERROR_ACCESS_DENIED:
        return L"may not be written to by the user, so English shows: ";
    case ERROR_SHARING_VIOLATION:
        return L"is held by another program, so English shows: ";
    default:
        return L"cannot be opened (Windows error " + std::to_wstring(error) + L"), so English shows: ";
    }
}

std::optional<std::string> ReadAll(HANDLE file)
{
    const DWORD size = GetFileSize(file, nullptr);
    DWORD read = 0;
    std::string bytes(std::min(size, LargestFile), '\0');
    if (!ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr) || read != size) {
        return std::nullopt;
    }
    return bytes;
}

std::wstring InUnits(const std::string& bytes)
{
    std::wstring units;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = static_cast<unsigned char>(bytes[i + 1]);
        units += static_cast<wchar_t>(low | high << 8);
    }
    return units;
}

// Every second half a pair, the first before it; a text of another encoding rarely has both this and line
// ends.
bool HasWholePairs(const std::wstring& units)
{
    bool isInPair = false;
    for (const wchar_t unit : units) {
        const bool isSecond = unit >= 0xDC00 && unit <= 0xDFFF;
        if (isSecond != isInPair) {
            return false;
        }
        isInPair = unit >= 0xD800 && unit <= 0xDBFF;
    }
    return !isInPair;
}

std::size_t CountLines(const std::wstring& units)
{
    const auto ends = static_cast<std::size_t>(std::count(units.begin(), units.end(), L'\n'));
    return units.empty() || units.back() == L'\n' ? ends : ends + 1;
}

// Empty where the texts are as the library wants them.
std::wstring FaultOf(const std::string& bytes)
{
    const std::wstring units = InUnits(bytes);
    const bool hasLines = units.find(L'\n') != units.npos;
    if (bytes.size() % 2 != 0 || !hasLines || !HasWholePairs(units)) {
        return L"is not UTF-16 (little-endian), so texts are odd or empty: ";
    }
    if (units.front() == 0xFEFF) {
        return L"begins with a byte-order mark, which becomes part of the first text: ";
    }
    if (units.find(L"\r\n") != units.npos) {
        return L"has carriage returns, which become part of the texts: ";
    }
    if (const std::size_t lines = CountLines(units); lines != Lines) {
        return L"has " + std::to_wstring(lines) + L" lines and must have " + std::to_wstring(Lines) + L": ";
    }
    return {};
}

} // namespace

Finding CheckLanguageFile(int languageId)
{
    const std::wstring code = product_services::LanguageCodeFromId(languageId);
    const std::wstring path = WholePath(L"lang\\" + code + L"\\Vemo_" + code + L".lang");
    const HANDLE handle = OpenAsTheLibrary(path);
    if (handle == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        // Who asks for English, or for no language, gets what was asked for.
        const bool isEnglish = code == L"EN" || code == L"US";
        return {
            isEnglish ? State::Note : State::Wrong, L"language file", OpenFailure(error) + path,
            rows::English};
    }
    const File file(handle);
    const auto bytes = ReadAll(handle);
    const std::wstring fault = bytes ? FaultOf(*bytes) : L"cannot be read: ";
    if (!fault.empty()) {
        return {State::Wrong, L"language file", fault + path, rows::English};
    }
    return {State::Ok, L"language file", L"writable, UTF-16, 88 lines: " + path, rows::English};
}

} // namespace doctor
