#include "doctor/machine_checks.h"

#include "text/default_texts.h"
#include "text/language_code.h"
#include "text/language_file.h"
#include "text/utf16.h"
#include "unique_handle.h"

#include <algorithm>
#include <filesystem>

namespace product_services_tool {
namespace {

using product_services::DefaultTextCount;

constexpr DWORD MaxFileSize = 16 << 20;

std::wstring OpenErrorText(DWORD error)
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return L" was not found";
    case ERROR_ACCESS_DENIED:
        return L" is not writable by this user";
    case ERROR_SHARING_VIOLATION:
        return L" is in use by another program";
    default:
        return L" cannot be opened (Windows error " + std::to_wstring(error) + L")";
    }
}

// Returns an empty text if the format is as the library expects it.
std::wstring FindFormatError(const std::string& bytes)
{
    const std::wstring text = product_services::DecodeUtf16(bytes);
    // Text in another encoding almost never has line ends and no unpaired surrogates.
    if (text.size() * 2 != bytes.size() || text.find(L'\n') == text.npos) {
        return L" is not UTF-16 (little-endian), so texts are garbled or empty";
    }
    if (text.front() == L'\xFEFF') {
        return L" begins with a byte-order mark, which becomes part of the first text";
    }
    if (text.find(L'\r') != text.npos) {
        return L" has carriage returns, which become part of the texts";
    }
    const auto ends = std::count(text.begin(), text.end(), L'\n');
    const auto lines = text.back() == L'\n' ? ends : ends + 1;
    if (lines != DefaultTextCount) {
        return L" has " + std::to_wstring(lines) + L" lines, expected " + std::to_wstring(DefaultTextCount);
    }
    return {};
}

} // namespace

LanguageFile ReadLanguageFile(std::int32_t languageId)
{
    LanguageFile file;
    file.code = product_services::LanguageCodeFromId(languageId);
    file.path = std::filesystem::absolute(product_services::LanguageFilePath(file.code)).wstring();
    // Opens it like the library.
    const HANDLE handle = CreateFileW(
        file.path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
        OPEN_EXISTING, 0, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        file.error = GetLastError();
        return file;
    }
    const product_services_guard::UniqueHandle owner(handle);
    DWORD size = std::min(GetFileSize(handle, nullptr), MaxFileSize);
    file.bytes.resize(size);
    if (!ReadFile(handle, file.bytes.data(), size, &size, nullptr)) {
        file.error = GetLastError();
    }
    return file;
}

Finding CheckLanguageFile(const LanguageFile& file)
{
    Finding finding{Severity::Ok, L"language file", file.path, help_anchors::English};
    if (file.error != ERROR_SUCCESS) {
        // English and unknown languages do not need a file, because the built-in texts are English.
        const bool isEnglish = file.code == L"EN" || file.code == L"US";
        finding.severity = isEnglish ? Severity::Ok : Severity::Error;
        finding.message += OpenErrorText(file.error) + L", so English is used";
    } else if (const std::wstring error = FindFormatError(file.bytes); !error.empty()) {
        finding.severity = Severity::Error;
        finding.message += error;
    }
    return finding;
}

} // namespace product_services_tool
