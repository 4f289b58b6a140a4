// Verifies that a chain of certificates meets a policy of Windows.
#pragma once

#include <windows.h>

#include <wincrypt.h>

namespace product_services_guard {

/// Returns 0 if the chain meets the policy, otherwise Windows' error. An unknown revocation status is
/// ignored. `settings` are those of the policy.
LONG VerifyChainPolicy(
    const char* policyName, const CERT_CHAIN_CONTEXT& chain, void* settings,
    decltype(&CertVerifyCertificateChainPolicy) verifyPolicy = &CertVerifyCertificateChainPolicy);

} // namespace product_services_guard
