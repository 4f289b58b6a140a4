// Verifies the service's certificate.
#pragma once

#include <curl/curl.h>
#include <string>
#include <windows.h>

#include <wincrypt.h>

namespace product_services_guard {

/// The functions with which Windows verifies a certificate.
struct CertificateApi
{
    decltype(&CertGetCertificateChain) getChain = &CertGetCertificateChain;
    decltype(&CertFreeCertificateChain) freeChain = &CertFreeCertificateChain;
    decltype(&CertVerifyCertificateChainPolicy) verifyPolicy = &CertVerifyCertificateChainPolicy;
};

/// Verifies the certificate of the server to which a transfer has just connected. Returns an empty text if it
/// is valid for the host; otherwise a message with its subject, its issuer, and what is wrong with it. Throws
/// std::bad_alloc.
std::wstring VerifyServerCertificate(CURL* handle, const std::wstring& host, long remainingMs);

/// Does the same for a given certificate. Windows may take `remainingMs` to fetch an issuer or a root that it
/// does not have. Revocation is checked in Windows' cache only.
std::wstring VerifyCertificate(
    PCCERT_CONTEXT certificate, const std::wstring& host, long remainingMs, const CertificateApi& api = {});

} // namespace product_services_guard
