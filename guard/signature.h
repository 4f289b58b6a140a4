// What Windows says of the signature within a file.
#pragma once

#include <string>
#include <windows.h>

namespace product_services_guard {

struct Signature
{
    /// Zero where Windows trusts the signature, else why it does not.
    LONG status = 0;
    /// What is wrong with the signer's certificates, as in CERT_TRUST_STATUS; not all of it costs the trust.
    DWORD certificateErrors = 0;
    /// The signer's name as Windows shows it; empty where there is none.
    std::wstring signer;
};

/// Verifies the file through its handle; the path says of what kind it is. Throws std::bad_alloc.
Signature ReadSignature(HANDLE file, const wchar_t* path);

} // namespace product_services_guard
