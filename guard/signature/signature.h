// What Windows finds out about the signature within a file.
#pragma once

#include <string>
#include <windows.h>

#include <softpub.h>
#include <wincrypt.h>
#include <wintrust.h>

namespace product_services_guard {

/// The functions that verify a signature, which are loaded at the first need. Null if they cannot be loaded.
struct WinTrustApi
{
    decltype(&WinVerifyTrust) verifyTrust;
    decltype(&WTHelperProvDataFromStateData) getData;
    decltype(&WTHelperGetProvSignerFromChain) getSigner;
};

WinTrustApi LoadWinTrust();

struct Signature
{
    /// 0 if Windows trusts the signature, else why it does not.
    LONG status = 0;
    /// What is wrong with the signer's certificates, as in CERT_TRUST_STATUS. Windows accepts some of it.
    DWORD certificateErrors = 0;
    /// The common name of the signer; empty if there is none.
    std::wstring signer = {};
    /// Whether the file holds data that the signature does not cover.
    bool hasAppendedData = false;
};

/// Verifies the file through its handle; the path says of what kind it is. Throws std::bad_alloc.
Signature ReadSignature(HANDLE file, const wchar_t* path, const WinTrustApi& api = LoadWinTrust());

} // namespace product_services_guard
