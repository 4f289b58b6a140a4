// Which questions Windows gets about a server's certificate, and what becomes of its answers.
#define CERT_CHAIN_PARA_HAS_EXTRA_FIELDS

#include "certificate/server_certificate.h"

#include <gtest/gtest.h>
#include <string>

#include <wininet.h>

using namespace product_services_guard;

namespace {

// A certificate without names, and a chain whose errors the test sets.
CERT_INFO information{};
CERT_CONTEXT certificate{X509_ASN_ENCODING, nullptr, 0, &information, reinterpret_cast<HCERTSTORE>(0x5702E)};
CERT_CHAIN_CONTEXT builtChain{};
DWORD policyError = 0;
bool isChainFreed = false;

BOOL WINAPI GetChain(
    HCERTCHAINENGINE engine, PCCERT_CONTEXT subject, FILETIME* time, HCERTSTORE intermediates,
    CERT_CHAIN_PARA* parameters, DWORD flags, void*, PCCERT_CHAIN_CONTEXT* chain)
{
    EXPECT_EQ(engine, nullptr) << "the current user's";
    EXPECT_EQ(subject, &certificate);
    EXPECT_EQ(time, nullptr) << "now";
    EXPECT_EQ(intermediates, certificate.hCertStore) << "the certificates that the server has sent";
    EXPECT_EQ(parameters->RequestedUsage.Usage.cUsageIdentifier, 1u);
    EXPECT_STREQ(parameters->RequestedUsage.Usage.rgpszUsageIdentifier[0], szOID_PKIX_KP_SERVER_AUTH);
    EXPECT_EQ(parameters->dwUrlRetrievalTimeout, 1234u);
    constexpr DWORD RevocationFromCache =
        CERT_CHAIN_REVOCATION_CHECK_CHAIN_EXCLUDE_ROOT | CERT_CHAIN_REVOCATION_CHECK_CACHE_ONLY;
    EXPECT_EQ(flags, RevocationFromCache);
    isChainFreed = false;
    *chain = &builtChain;
    return TRUE;
}

void WINAPI FreeChain(PCCERT_CHAIN_CONTEXT chain)
{
    isChainFreed = chain == &builtChain;
}

BOOL WINAPI VerifyPolicy(
    const char* policyName, PCCERT_CHAIN_CONTEXT chain, CERT_CHAIN_POLICY_PARA* policy,
    CERT_CHAIN_POLICY_STATUS* status)
{
    EXPECT_EQ(policyName, CERT_CHAIN_POLICY_SSL);
    EXPECT_EQ(chain, &builtChain);
    EXPECT_EQ(policy->dwFlags, static_cast<DWORD>(CERT_CHAIN_POLICY_IGNORE_ALL_REV_UNKNOWN_FLAGS));
    const auto& server = *static_cast<SSL_EXTRA_CERT_CHAIN_POLICY_PARA*>(policy->pvExtraPolicyPara);
    EXPECT_EQ(server.dwAuthType, static_cast<DWORD>(AUTHTYPE_SERVER));
    EXPECT_EQ(server.fdwChecks, static_cast<DWORD>(SECURITY_FLAG_IGNORE_REVOCATION));
    EXPECT_STREQ(server.pwszServerName, L"host.example");
    status->dwError = policyError;
    return TRUE;
}

constexpr CertificateApi FakeApi{GetChain, FreeChain, VerifyPolicy};

} // namespace

TEST(ServerCertificate, IsVerifiedByWindows)
{
    const struct
    {
        const char* name;
        DWORD trustErrors;
        LONG policyError;
        std::wstring reason;
    } cases[]{
        {"valid", 0, 0, L""},
        {"valid, revocation unknown", CERT_TRUST_REVOCATION_STATUS_UNKNOWN, 0, L""},
        {"another name", 0, CERT_E_CN_NO_MATCH, L"it is for another host name"},
        {"an unknown root", 0, CERT_E_UNTRUSTEDROOT, L"its issuer is not trusted"},
        {"no chain, by the policy", 0, CERT_E_CHAINING, L"its issuer is not trusted"},
        {"no chain, by the chain", CERT_TRUST_IS_PARTIAL_CHAIN, 0, L"its issuer is not trusted"},
        {"revoked", CERT_TRUST_IS_REVOKED, 0, L"it has been revoked"},
        {"another usage, by the policy", 0, CERT_E_WRONG_USAGE, L"it is not for servers"},
        {"another usage, by the chain", CERT_TRUST_IS_NOT_VALID_FOR_USAGE, 0, L"it is not for servers"},
        {"another error", 0, TRUST_E_CERT_SIGNATURE, L"Windows error 0x80096004"},
    };
    for (const auto& [name, trustErrors, error, reason] : cases) {
        SCOPED_TRACE(name);
        builtChain.TrustStatus.dwErrorStatus = trustErrors;
        policyError = static_cast<DWORD>(error);
        const std::wstring expected = reason.empty() ? L""
                                                     : L"The certificate of host.example is not valid: " +
                                                           reason + L". It is for , issued by .";
        EXPECT_EQ(VerifyCertificate(&certificate, L"host.example", 1234, FakeApi), expected);
        EXPECT_TRUE(isChainFreed);
    }
}

TEST(ServerCertificate, IsRejectedIfWindowsFails)
{
    CertificateApi failing = FakeApi;
    failing.getChain = [](auto...) { return FALSE; };
    EXPECT_NE(VerifyCertificate(&certificate, L"host.example", 1234, failing), L"");
    failing = FakeApi;
    failing.verifyPolicy = [](auto...) { return FALSE; };
    EXPECT_NE(VerifyCertificate(&certificate, L"host.example", 1234, failing), L"");
}
