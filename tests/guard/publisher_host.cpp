// publisher_host (PATH PUBLISHERS OPTION)... verifies files and prints a line with the result and its text
// for each. An empty argument is passed as null; "|" separates publishers. Options: "read" or "write" has the
// file open in the meantime; "start" starts the file with the arguments "started FILE", and "start NUMBER"
// lets the start fail with this error of Windows; a hexadecimal number adds these errors to the signer's
// certificates (CERT_TRUST_STATUS). "publisher_host started FILE" creates FILE.
#include "product_services/publisher.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <import_hook.h>
#include <string>
#include <windows.h>

#include <shellapi.h>
#include <wincrypt.h>

static DWORD certificateErrors;
static DWORD startError;

static HANDLE WINAPI CreateFileHook(const wchar_t*, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD, HANDLE)
{
    std::printf("opened again: ");
    return INVALID_HANDLE_VALUE;
}

static BOOL WINAPI GetCertificateChainHook(
    HCERTCHAINENGINE engine, PCCERT_CONTEXT signer, FILETIME* time, HCERTSTORE store, CERT_CHAIN_PARA* use,
    DWORD flags, void* reserved, PCCERT_CHAIN_CONTEXT* chain)
{
    const BOOL isBuilt = CertGetCertificateChain(engine, signer, time, store, use, flags, reserved, chain);
    const_cast<CERT_CHAIN_CONTEXT*>(*chain)->TrustStatus.dwErrorStatus |= certificateErrors;
    return isBuilt;
}

static HANDLE OpenPath(const wchar_t* path, DWORD access, DWORD sharing, DWORD disposition)
{
    return CreateFileW(path, access, sharing, nullptr, disposition, 0, nullptr);
}

static bool IsLeftOpen(const wchar_t* path)
{
    const HANDLE file = OpenPath(path, GENERIC_READ, 0, OPEN_EXISTING);
    const bool isLeftOpen = file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(file);
    return isLeftOpen;
}

static BOOL WINAPI ShellExecuteHook(SHELLEXECUTEINFOW* start)
{
    std::printf("%s", IsLeftOpen(start->lpFile) ? "locked, " : "");
    SetLastError(startError);
    return startError == 0 && ShellExecuteExW(start);
}

static BOOL WINAPI DuplicateHandleHook(
    HANDLE owner, HANDLE file, HANDLE program, HANDLE* duplicate, DWORD access, BOOL isInherited,
    DWORD options)
{
    const BOOL isKept = DuplicateHandle(owner, file, program, duplicate, access, isInherited, options);
    std::printf("%s", isKept ? "kept locked: " : "");
    return isKept;
}

static const wchar_t* OrNull(const std::wstring& text)
{
    return text.empty() ? nullptr : text.c_str();
}

static void VerifyOne(const std::wstring& path, std::wstring publishers, const std::wstring& option)
{
    std::replace(publishers.begin(), publishers.end(), L'|', L'\n');
    const DWORD access = option == L"read" ? GENERIC_READ : option == L"write" ? GENERIC_WRITE : 0;
    const HANDLE file = access ? OpenPath(path.c_str(), access, FILE_SHARE_READ, OPEN_EXISTING) : nullptr;
    certificateErrors = std::wcstoul(option.c_str(), nullptr, 16);
    wchar_t text[300] = L"";
    std::uint32_t result = 0;
    const bool starts = option.starts_with(L"start");
    if (starts) {
        startError = std::wcstoul(option.c_str() + std::wcslen(L"start"), nullptr, 10);
        const std::wstring arguments = L"started \"" + path + L".started\"";
        result = StartVerifiedFile(OrNull(path), OrNull(publishers), arguments.c_str(), text, 300);
    } else {
        result = VerifyPublisher(OrNull(path), OrNull(publishers), text, 300);
    }
    CloseHandle(file);
    const bool isLeftOpen = !starts && IsLeftOpen(path.c_str());
    std::printf("%s%u %ls\n", isLeftOpen ? "left open: " : "", result, text);
}

int wmain(int count, wchar_t** arguments)
{
    if (count == 3 && std::wstring(arguments[1]) == L"started") {
        CloseHandle(OpenPath(arguments[2], GENERIC_WRITE, 0, CREATE_ALWAYS));
        return 0;
    }
    const HMODULE windows = LoadLibraryW(L"wintrust.dll");
    const HMODULE guard = LoadLibraryW(L"ProductServicesGuard.dll");
    ImportHook opening;
    ImportHook building;
    ImportHook starting;
    ImportHook duplicating;
    opening.Install(windows, "CreateFileW", reinterpret_cast<void*>(CreateFileHook));
    building.Install(windows, "CertGetCertificateChain", reinterpret_cast<void*>(GetCertificateChainHook));
    starting.Install(guard, "ShellExecuteExW", reinterpret_cast<void*>(ShellExecuteHook));
    duplicating.Install(guard, "DuplicateHandle", reinterpret_cast<void*>(DuplicateHandleHook));
    for (int i = 1; i + 2 < count; i += 3) {
        VerifyOne(arguments[i], arguments[i + 1], arguments[i + 2]);
    }
    return 0;
}
