// The parameters with which Windows' functions are called before a file is trusted. Wine's results do not
// depend on them.
#include "certificate/certificate_name.h"
#include "certificate/server_certificate.h"
#include "proxy/win_http.h"
#include "signature/locked_file.h"
#include "signature/signature.h"
#include "signature/start_file.h"

#include <gtest/gtest.h>
#include <import_hook.h>
#include <set>
#include <vector>

#include <shellapi.h>

using namespace product_services_guard;

namespace {

std::set<std::wstring> loaded;

HMODULE WINAPI LoadLibraryStub(const wchar_t* name, HANDLE, DWORD flags)
{
    EXPECT_EQ(flags, DWORD{LOAD_LIBRARY_SEARCH_SYSTEM32}) << "the program's folder is not searched";
    loaded.insert(name);
    return nullptr;
}

std::wstring openedPath;

HANDLE WINAPI CreateFileStub(
    const wchar_t* path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES*, DWORD disposition, DWORD flags,
    HANDLE)
{
    openedPath = path;
    EXPECT_EQ(access, GENERIC_READ);
    EXPECT_EQ(sharing, DWORD{FILE_SHARE_READ}) << "nobody else can replace the file";
    EXPECT_EQ(disposition, DWORD{OPEN_EXISTING});
    EXPECT_EQ(flags, DWORD{SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS})
        << "the server of a pipe must not impersonate the user";
    SetLastError(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
}

std::wstring startedPath;

BOOL WINAPI ShellExecuteStub(SHELLEXECUTEINFOW* start)
{
    startedPath = start->lpFile;
    EXPECT_EQ(start->fMask, ULONG{SEE_MASK_NOASYNC | SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI});
    EXPECT_STREQ(start->lpVerb, L"open");
    EXPECT_STREQ(start->lpParameters, L"/quiet");
    return TRUE;
}

const HANDLE State = reinterpret_cast<HANDLE>(0x57A7E);
std::vector<DWORD> actions;

LONG WINAPI VerifyTrustStub(HWND window, GUID*, void* request)
{
    auto& data = *static_cast<WINTRUST_DATA*>(request);
    EXPECT_EQ(window, INVALID_HANDLE_VALUE) << "there is no user";
    EXPECT_EQ(data.dwUIChoice, DWORD{WTD_UI_NONE});
    EXPECT_EQ(data.fdwRevocationChecks, DWORD{WTD_REVOKE_WHOLECHAIN});
    EXPECT_EQ(data.dwProvFlags, DWORD{WTD_REVOCATION_CHECK_CHAIN_EXCLUDE_ROOT});
    EXPECT_EQ(data.hWVTStateData, actions.empty() ? nullptr : State);
    actions.push_back(data.dwStateAction);
    data.hWVTStateData = State;
    return TRUST_E_BAD_DIGEST;
}

} // namespace

TEST(SystemFunctions, AreLoadedFromTheSystemFolder)
{
    ImportHook loading;
    ASSERT_TRUE(loading.Install(
        GetModuleHandleW(nullptr), "LoadLibraryExW", reinterpret_cast<void*>(LoadLibraryStub)));
    EXPECT_EQ(LoadWinTrust().verifyTrust, nullptr);
    EXPECT_EQ(LoadWinHttp().open, nullptr);
    EXPECT_NE(VerifyServerCertificate(nullptr, L"host", 0), L"") << "without a connection";
    EXPECT_EQ(loaded, (std::set<std::wstring>{L"secur32.dll", L"winhttp.dll", L"wintrust.dll"}));
}

TEST(LockedFile, IsOpenedAtPathsOfAnyLength)
{
    ImportHook opening;
    ASSERT_TRUE(
        opening.Install(GetModuleHandleW(nullptr), "CreateFileW", reinterpret_cast<void*>(CreateFileStub)));
    const std::wstring name(260, L'n');
    const std::pair<std::wstring, std::wstring> paths[]{
        {L"C:\\short.exe", L"C:\\short.exe"},
        {L"C:\\" + name, L"\\\\?\\C:\\" + name},
        {L"\\\\server\\share\\" + name, L"\\\\?\\UNC\\server\\share\\" + name},
        {L"\\\\?\\C:\\" + name, L"\\\\?\\C:\\" + name},
    };
    for (const auto& [path, expected] : paths) {
        EXPECT_EQ(LockFile(path.c_str()).error, L"The file was not found.");
        EXPECT_EQ(openedPath, expected);
    }
}

TEST(LockedFile, IsStartedAtAPathForTheShell)
{
    ImportHook starting;
    ASSERT_TRUE(starting.Install(
        GetModuleHandleW(nullptr), "ShellExecuteExW", reinterpret_cast<void*>(ShellExecuteStub)));
    const std::pair<std::wstring, std::wstring> paths[]{
        {L"\\\\?\\C:\\folder\\setup.exe", L"C:\\folder\\setup.exe"},
        {L"\\\\?\\UNC\\server\\share\\setup.MSI", L"\\\\server\\share\\setup.MSI"},
        {L"C:\\setup.exe", L"C:\\setup.exe"},
        {L"\\\\?\\C:\\setup.cmd", L""},
        {L"", L""},
    };
    for (const auto& [path, expected] : paths) {
        startedPath.clear();
        StartFile({nullptr, L"", path, L""}, L"/quiet");
        EXPECT_EQ(startedPath, expected);
    }
}

TEST(Signature, IsVerifiedWithRevocationChecks)
{
    const WinTrustApi api{
        VerifyTrustStub, [](HANDLE) -> CRYPT_PROVIDER_DATA* { return nullptr; },
        [](CRYPT_PROVIDER_DATA*, DWORD, BOOL, DWORD) -> CRYPT_PROVIDER_SGNR* { return nullptr; }};
    EXPECT_EQ(ReadSignature(INVALID_HANDLE_VALUE, L"any.exe", api).status, TRUST_E_BAD_DIGEST);
    EXPECT_EQ(actions, (std::vector<DWORD>{WTD_STATEACTION_VERIFY, WTD_STATEACTION_CLOSE}));
}

TEST(CommonName, IsNotTruncatedAtANul)
{
    BYTE subject[] = "\x30\x0E\x31\x0C\x30\x0A\x06\x03\x55\x04\x03\x0C\x03"
                     "A\0B";
    CERT_INFO information{};
    information.Subject = {sizeof subject - 1, subject};
    const CERT_CONTEXT certificate{X509_ASN_ENCODING, nullptr, 0, &information, nullptr};
    EXPECT_EQ(GetCommonName(&certificate), std::wstring(L"A\0B", 3));
}
