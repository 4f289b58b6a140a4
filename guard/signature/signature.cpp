#include "signature/signature.h"

#include "certificate/certificate_name.h"
#include "certificate/chain_policy.h"
#include "signature/appended_data.h"
#include "system_function.h"

namespace product_services_guard {
namespace {

// One verification, whose data Windows keeps until the destructor closes it.
class Verification
{
public:
    Verification(const WinTrustApi& api, HANDLE file, const wchar_t* path) : m_api(api)
    {
        m_file.cbStruct = sizeof m_file;
        m_file.pcwszFilePath = path;
        m_file.hFile = file;
        m_data.cbStruct = sizeof m_data;
        m_data.dwUIChoice = WTD_UI_NONE;
        m_data.fdwRevocationChecks = WTD_REVOKE_WHOLECHAIN;
        m_data.dwProvFlags = WTD_REVOCATION_CHECK_CHAIN_EXCLUDE_ROOT;
        m_data.dwUnionChoice = WTD_CHOICE_FILE;
        m_data.pFile = &m_file;
    }
    ~Verification() { CallWinVerifyTrust(WTD_STATEACTION_CLOSE); }
    Verification(const Verification&) = delete;
    Verification& operator=(const Verification&) = delete;

    LONG Verify() { return CallWinVerifyTrust(WTD_STATEACTION_VERIFY); }

    // The data that Windows has found, which lives as long as this object. Null if there is none.
    CRYPT_PROVIDER_DATA* Data() const { return m_api.getData(m_data.hWVTStateData); }

private:
    LONG CallWinVerifyTrust(DWORD action)
    {
        m_data.dwStateAction = action;
        GUID authenticode = WINTRUST_ACTION_GENERIC_VERIFY_V2;
        return m_api.verifyTrust(static_cast<HWND>(INVALID_HANDLE_VALUE), &authenticode, &m_data);
    }

    const WinTrustApi& m_api;
    WINTRUST_FILE_INFO m_file{};
    WINTRUST_DATA m_data{};
};

// On Windows, WinVerifyTrust has already done this. Wine 8 skips it and reports success if a certificate is
// signed with SHA-256.
LONG CheckAuthenticodePolicy(const CRYPT_PROVIDER_DATA& data, const CRYPT_PROVIDER_SGNR& signer)
{
    AUTHENTICODE_EXTRA_CERT_CHAIN_POLICY_PARA settings{};
    settings.cbSize = sizeof settings;
    settings.dwRegPolicySettings = data.dwRegPolicySettings;
    settings.pSignerInfo = signer.psSigner;
    return VerifyChainPolicy(CERT_CHAIN_POLICY_AUTHENTICODE, *signer.pChainContext, &settings);
}

std::wstring GetSignerName(const CERT_CHAIN_CONTEXT& chain)
{
    return GetCommonName(chain.rgpChain[0]->rgpElement[0]->pCertContext);
}

} // namespace

WinTrustApi LoadWinTrust()
{
    return {
        LOAD_SYSTEM_FUNCTION(L"wintrust.dll", WinVerifyTrust),
        LOAD_SYSTEM_FUNCTION(L"wintrust.dll", WTHelperProvDataFromStateData),
        LOAD_SYSTEM_FUNCTION(L"wintrust.dll", WTHelperGetProvSignerFromChain)};
}

Signature ReadSignature(HANDLE file, const wchar_t* path, const WinTrustApi& api)
{
    Signature signature{.status = TRUST_E_SYSTEM_ERROR};
    if (!api.verifyTrust || !api.getData || !api.getSigner) {
        return signature;
    }
    Verification verification(api, file, path);
    const LONG status = verification.Verify();
    CRYPT_PROVIDER_DATA* const data = verification.Data();
    const CRYPT_PROVIDER_SGNR* const signer = data ? api.getSigner(data, 0, FALSE, 0) : nullptr;
    if (!signer || !signer->pChainContext) {
        signature.status = status == 0 ? TRUST_E_SYSTEM_ERROR : status;
        return signature;
    }
    signature.status = status == 0 ? CheckAuthenticodePolicy(*data, *signer) : status;
    signature.certificateErrors = signer->pChainContext->TrustStatus.dwErrorStatus;
    signature.signer = GetSignerName(*signer->pChainContext);
    signature.hasAppendedData = HasAppendedData(file);
    return signature;
}

} // namespace product_services_guard
