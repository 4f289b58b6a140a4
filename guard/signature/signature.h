// Reads the signature that is embedded in a file.
#pragma once

#include <string>
#include <windows.h>

#include <softpub.h>
#include <wincrypt.h>
#include <wintrust.h>

namespace product_services_guard {

/// The functions that verify a signature, which are loaded on demand. Null if they cannot be loaded.
struct WinTrustApi
{
    decltype(&WinVerifyTrust) verifyTrust;
    decltype(&WTHelperProvDataFromStateData) getData;
    decltype(&WTHelperGetProvSignerFromChain) getSigner;
};

WinTrustApi LoadWinTrust();

struct Signature
{
    /// 0 if Windows trusts the signature, otherwise an error code.
    LONG status = 0;
    /// Errors of the signer's certificates, as in CERT_TRUST_STATUS. Windows accepts some of them.
    DWORD certificateErrors = 0;
    /// The common name of the signer; empty if there is none.
    std::wstring signer = {};
    /// Whether the file has data that the signature does not cover.
    bool hasAppendedData = false;
};

/// Verifies the file through its handle. Windows derives the file's type from the path. Throws
/// std::bad_alloc.
Signature ReadSignature(HANDLE file, const wchar_t* path, const WinTrustApi& api = LoadWinTrust());

} // namespace product_services_guard
