#include "product_services/publisher.h"

#include "bounded_text.h"
#include "publisher_verdict.h"
#include "signature.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <windows.h>

namespace product_services_guard {
namespace {

struct Closed
{
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using File = std::unique_ptr<void, Closed>;

// The whole path, in the form that Windows takes at any length; empty where it is none.
std::wstring WholePath(const wchar_t* path)
{
    if (std::wstring_view(path).starts_with(LR"(\\?\)")) {
        return path;
    }
    std::wstring whole(GetFullPathNameW(path, 0, nullptr, nullptr), L'\0');
    whole.resize(GetFullPathNameW(path, static_cast<DWORD>(whole.size()), whole.data(), nullptr));
    if (whole.size() < MAX_PATH || whole.starts_with(LR"(\\.\)")) {
        return whole;
    }
    return whole.starts_with(LR"(\\)") ? LR"(\\?\UNC)" + whole.substr(1) : LR"(\\?\)" + whole;
}

Verdict Unreadable(const wchar_t* sentence)
{
    return {PRODUCT_SERVICES_PUBLISHER_UNREADABLE, sentence};
}

Verdict OpenFailure(const std::wstring& path, DWORD error)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        return Unreadable(L"The path is that of a folder.");
    }
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return Unreadable(L"There is no such file.");
    case ERROR_SHARING_VIOLATION:
        return Unreadable(L"The file is in use: another program may write to it.");
    case ERROR_ACCESS_DENIED:
        return Unreadable(L"The file may not be read.");
    default:
        return {
            PRODUCT_SERVICES_PUBLISHER_UNREADABLE,
            L"The file could not be opened (Windows error " + std::to_wstring(error) + L")."};
    }
}

Verdict Verify(const wchar_t* path, const wchar_t* publisher)
{
    if (!path || !*path || !publisher || !*publisher) {
        return Unreadable(L"The path or the publisher is empty.");
    }
    const std::wstring whole = WholePath(path);
    // Nobody can write to the file while this handle is open; whoever may write already keeps it from
    // opening.
    const HANDLE handle = CreateFileW(
        whole.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
        SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return OpenFailure(whole, GetLastError());
    }
    const File file(handle);
    if (GetFileType(handle) != FILE_TYPE_DISK) {
        return Unreadable(L"The path is that of a device.");
    }
    return Judge(ReadSignature(handle, whole.c_str()), publisher);
}

} // namespace
} // namespace product_services_guard

using namespace product_services_guard;

std::uint32_t VerifyPublisher(
    const wchar_t* path, const wchar_t* publisher, wchar_t* text, std::uint32_t textCapacity)
{
    try {
        const Verdict verdict = Verify(path, publisher);
        CopyBounded(text, textCapacity, verdict.text.c_str());
        return verdict.outcome;
    } catch (const std::exception&) {
        CopyBounded(text, textCapacity, L"There is not enough memory to verify the file.");
        return PRODUCT_SERVICES_PUBLISHER_UNREADABLE;
    }
}
