#include "certificate/chain_policy.h"

namespace product_services_guard {

LONG VerifyChainPolicy(
    const char* policyName, const CERT_CHAIN_CONTEXT& chain, void* settings,
    decltype(&CertVerifyCertificateChainPolicy) verifyPolicy)
{
    CERT_CHAIN_POLICY_PARA policy{};
    policy.cbSize = sizeof policy;
    policy.dwFlags = CERT_CHAIN_POLICY_IGNORE_ALL_REV_UNKNOWN_FLAGS;
    policy.pvExtraPolicyPara = settings;
    CERT_CHAIN_POLICY_STATUS status{};
    status.cbSize = sizeof status;
    if (!verifyPolicy(policyName, &chain, &policy, &status)) {
        return TRUST_E_SYSTEM_ERROR;
    }
    return static_cast<LONG>(status.dwError);
}

} // namespace product_services_guard
