#include "signature/start_file.h"

#include "unique_handle.h"
#include "url/ascii.h"

#include <windows.h>

#include <shellapi.h>

namespace product_services_guard {
namespace {

// The shell does not accept the prefix \\?\ of a path.
std::wstring ToShellPath(const std::wstring& finalPath)
{
    constexpr std::wstring_view Share = LR"(\\?\UNC\)";
    constexpr std::wstring_view Drive = LR"(\\?\)";
    if (finalPath.starts_with(Share)) {
        return LR"(\\)" + finalPath.substr(Share.size());
    }
    return finalPath.starts_with(Drive) ? finalPath.substr(Drive.size()) : finalPath;
}

// Windows chooses by the extension how it runs a file, so a signed program with the extension of a script
// would run as a script.
bool CanBeStarted(const std::wstring& path)
{
    const std::wstring extension =
        ToLowerAscii(path.substr(path.size() - std::min<std::size_t>(path.size(), 4)));
    return extension == L".exe" || extension == L".msi";
}

// Windows Installer reads the package after it has been started, so its process gets a copy of the handle
// that locks the file.
void KeepLockedBy(HANDLE process, HANDLE file)
{
    HANDLE duplicate = nullptr;
    DuplicateHandle(GetCurrentProcess(), file, process, &duplicate, 0, FALSE, DUPLICATE_SAME_ACCESS);
}

std::wstring StartErrorText(DWORD error)
{
    return error == ERROR_CANCELLED
               ? L"The user did not allow the file to be started."
               : L"The file could not be started (Windows error " + std::to_wstring(error) + L").";
}

} // namespace

PublisherResult StartFile(const LockedFile& file, const wchar_t* arguments)
{
    const std::wstring path = ToShellPath(file.finalPath);
    if (path.empty()) {
        return {PRODUCT_SERVICES_PUBLISHER_NOT_STARTED, L"The location of the file could not be determined."};
    }
    if (!CanBeStarted(path)) {
        return {PRODUCT_SERVICES_PUBLISHER_NOT_STARTED, L"Only files that end in .exe or .msi are started."};
    }
    SHELLEXECUTEINFOW start{};
    start.cbSize = sizeof start;
    start.fMask = SEE_MASK_NOASYNC | SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    start.lpVerb = L"open";
    start.lpFile = path.c_str();
    start.lpParameters = arguments;
    start.nShow = SW_SHOWNORMAL;
    if (!ShellExecuteExW(&start)) {
        return {PRODUCT_SERVICES_PUBLISHER_NOT_STARTED, StartErrorText(GetLastError())};
    }
    if (const UniqueHandle process(start.hProcess); process) {
        KeepLockedBy(process.get(), file.handle.get());
    }
    return {PRODUCT_SERVICES_PUBLISHER_TRUSTED, L"The file was verified and started."};
}

} // namespace product_services_guard
