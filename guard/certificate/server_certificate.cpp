// Declares CERT_CHAIN_PARA::dwUrlRetrievalTimeout.
#define CERT_CHAIN_PARA_HAS_EXTRA_FIELDS
#define SECURITY_WIN32

#include "certificate/server_certificate.h"

#include "certificate/certificate_name.h"
#include "certificate/chain_policy.h"
#include "system_function.h"

#include <memory>
#include <schannel.h>
#include <security.h>
#include <wininet.h>

namespace product_services_guard {
namespace {

struct CertificateDeleter
{
    void operator()(const CERT_CONTEXT* certificate) const { CertFreeCertificateContext(certificate); }
};
using Certificate = std::unique_ptr<const CERT_CONTEXT, CertificateDeleter>;

using CertificateChain = std::unique_ptr<const CERT_CHAIN_CONTEXT, decltype(&CertFreeCertificateChain)>;

// Returns null if the transfer does not use TLS through Schannel.
Certificate GetServerCertificate(CURL* handle)
{
    const curl_tlssessioninfo* session = nullptr;
    const auto query = LOAD_SYSTEM_FUNCTION(L"secur32.dll", QueryContextAttributesW);
    if (curl_easy_getinfo(handle, CURLINFO_TLS_SSL_PTR, &session) != CURLE_OK || !session ||
        session->backend != CURLSSLBACKEND_SCHANNEL || !session->internals || !query) {
        return nullptr;
    }
    PCCERT_CONTEXT certificate = nullptr;
    query(static_cast<PCtxtHandle>(session->internals), SECPKG_ATTR_REMOTE_CERT_CONTEXT, &certificate);
    return Certificate(certificate);
}

CertificateChain BuildChain(const CertificateApi& api, PCCERT_CONTEXT certificate, long remainingMs)
{
    char serverAuthentication[] = szOID_PKIX_KP_SERVER_AUTH;
    char* usages[]{serverAuthentication};
    CERT_CHAIN_PARA parameters{};
    parameters.cbSize = sizeof parameters;
    parameters.RequestedUsage.dwType = USAGE_MATCH_TYPE_OR;
    parameters.RequestedUsage.Usage = {1, usages};
    parameters.dwUrlRetrievalTimeout = static_cast<DWORD>(remainingMs);
    constexpr DWORD Flags =
        CERT_CHAIN_REVOCATION_CHECK_CHAIN_EXCLUDE_ROOT | CERT_CHAIN_REVOCATION_CHECK_CACHE_ONLY;
    const CERT_CHAIN_CONTEXT* chain = nullptr;
    api.getChain(nullptr, certificate, nullptr, certificate->hCertStore, &parameters, Flags, nullptr, &chain);
    return {chain, api.freeChain};
}

// Returns 0 if Windows' TLS policy accepts the chain for the host. A revocation status that is not in the
// cache is ignored.
DWORD CheckTlsPolicy(const CertificateApi& api, const CERT_CHAIN_CONTEXT& chain, const std::wstring& host)
{
    std::wstring name = host;
    SSL_EXTRA_CERT_CHAIN_POLICY_PARA server{};
    server.cbSize = sizeof server;
    server.dwAuthType = AUTHTYPE_SERVER;
    server.pwszServerName = name.data();
    // CheckTrustStatus has found revoked certificates already. Wine ignores the policy's flag for an unknown
    // status.
    server.fdwChecks = SECURITY_FLAG_IGNORE_REVOCATION;
    return static_cast<DWORD>(VerifyChainPolicy(CERT_CHAIN_POLICY_SSL, chain, &server, api.verifyPolicy));
}

// Returns errors that Wine's TLS policy ignores.
DWORD CheckTrustStatus(const CERT_CHAIN_CONTEXT& chain)
{
    const DWORD errors = chain.TrustStatus.dwErrorStatus;
    if (errors & CERT_TRUST_IS_REVOKED) {
        return static_cast<DWORD>(CERT_E_REVOKED);
    }
    if (errors & CERT_TRUST_IS_PARTIAL_CHAIN) {
        return static_cast<DWORD>(CERT_E_CHAINING);
    }
    if (errors & CERT_TRUST_IS_NOT_VALID_FOR_USAGE) {
        return static_cast<DWORD>(CERT_E_WRONG_USAGE);
    }
    return 0;
}

bool IsNotYetValid(PCCERT_CONTEXT certificate)
{
    return CertVerifyTimeValidity(nullptr, certificate->pCertInfo) < 0;
}

std::wstring ErrorText(DWORD error, PCCERT_CONTEXT certificate)
{
    switch (static_cast<LONG>(error)) {
    case CERT_E_CN_NO_MATCH:
        return L"it is for another host name";
    case CERT_E_UNTRUSTEDROOT:
    case CERT_E_CHAINING:
        return L"its issuer is not trusted";
    case CERT_E_EXPIRED:
        return IsNotYetValid(certificate) ? L"it is not valid yet" : L"it has expired";
    case CERT_E_REVOKED:
    case CRYPT_E_REVOKED:
        return L"it has been revoked";
    case CERT_E_WRONG_USAGE:
        return L"it is not for servers";
    default: {
        wchar_t text[40];
        std::swprintf(text, std::size(text), L"Windows error 0x%08lX", error);
        return text;
    }
    }
}

} // namespace

std::wstring VerifyServerCertificate(CURL* handle, const std::wstring& host, long remainingMs)
{
    const Certificate certificate = GetServerCertificate(handle);
    if (!certificate) {
        return L"The connection to " + host + L" is not encrypted, so there is no certificate to verify.";
    }
    return VerifyCertificate(certificate.get(), host, remainingMs);
}

std::wstring VerifyCertificate(
    PCCERT_CONTEXT certificate, const std::wstring& host, long remainingMs, const CertificateApi& api)
{
    const CertificateChain chain = BuildChain(api, certificate, remainingMs);
    DWORD error = chain ? CheckTrustStatus(*chain) : static_cast<DWORD>(TRUST_E_SYSTEM_ERROR);
    if (error == 0) {
        error = CheckTlsPolicy(api, *chain, host);
    }
    if (error == 0) {
        return {};
    }
    return L"The certificate of " + host + L" is not valid: " + ErrorText(error, certificate) +
           L". It is for " + GetCertificateName(certificate, 0) + L", issued by " +
           GetCertificateName(certificate, CERT_NAME_ISSUER_FLAG) + L".";
}

} // namespace product_services_guard
