// Verifies files: publisher_host (PATH PUBLISHER OPTION)..., where an empty text is null. With the option
// read or write this program has the file open meanwhile; a number is what is found wrong with the signer's
// certificates besides (CERT_TRUST_STATUS, in hexadecimal).
#include "product_services/product_services.hpp"

#include <import_hook.h>

#include <cstdio>
#include <string_view>

#include <wincrypt.h>

static DWORD certificateErrors;

static HANDLE WINAPI OpenAgain(const wchar_t*, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD, HANDLE)
{
    std::printf("opened again: ");
    return INVALID_HANDLE_VALUE;
}

static BOOL WINAPI FindErrors(
    HCERTCHAINENGINE engine, PCCERT_CONTEXT signer, FILETIME* time, HCERTSTORE store, CERT_CHAIN_PARA* use,
    DWORD flags, void* reserved, PCCERT_CHAIN_CONTEXT* chain)
{
    const BOOL isBuilt = CertGetCertificateChain(engine, signer, time, store, use, flags, reserved, chain);
    const_cast<CERT_CHAIN_CONTEXT*>(*chain)->TrustStatus.dwErrorStatus |= certificateErrors;
    return isBuilt;
}

static void VerifyOne(const wchar_t* path, const wchar_t* publisher, std::wstring_view option)
{
    const DWORD access = option == L"read" ? GENERIC_READ : option == L"write" ? GENERIC_WRITE : 0;
    const HANDLE file =
        access ? CreateFileW(path, access, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr) : nullptr;
    certificateErrors = std::wcstoul(option.data(), nullptr, 16);
    wchar_t text[200] = L"";
    const auto found = VerifyPublisher(*path ? path : nullptr, *publisher ? publisher : nullptr, text, 200);
    CloseHandle(file);
    const HANDLE alone = CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    const bool isLeftOpen = alone == INVALID_HANDLE_VALUE && GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(alone);
    std::printf("%s%u %ls\n", isLeftOpen ? "left open: " : "", found, text);
}

int wmain(int count, wchar_t** arguments)
{
    const HMODULE windows = LoadLibraryW(L"wintrust.dll");
    product_services_guard::ImportHook opening;
    product_services_guard::ImportHook building;
    opening.Install(windows, "CreateFileW", reinterpret_cast<void*>(OpenAgain));
    building.Install(windows, "CertGetCertificateChain", reinterpret_cast<void*>(FindErrors));
    for (int i = 1; i + 2 < count; i += 3) {
        VerifyOne(arguments[i], arguments[i + 1], arguments[i + 2]);
    }
    return 0;
}
