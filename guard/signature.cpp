#include "signature.h"

#include "system_function.h"

#include <wincrypt.h>

#include <softpub.h>
#include <wintrust.h>

namespace product_services_guard {
namespace {

struct Functions
{
    decltype(&WinVerifyTrust) verify = SYSTEM_FUNCTION(L"wintrust.dll", WinVerifyTrust);
    decltype(&WTHelperProvDataFromStateData) findData =
        SYSTEM_FUNCTION(L"wintrust.dll", WTHelperProvDataFromStateData);
    decltype(&WTHelperGetProvSignerFromChain) findSigner =
        SYSTEM_FUNCTION(L"wintrust.dll", WTHelperGetProvSignerFromChain);
    decltype(&CertVerifyCertificateChainPolicy) verifyChain =
        SYSTEM_FUNCTION(L"crypt32.dll", CertVerifyCertificateChainPolicy);
    decltype(&CertGetNameStringW) readName = SYSTEM_FUNCTION(L"crypt32.dll", CertGetNameStringW);

    bool AreFound() const { return verify && findData && findSigner && verifyChain && readName; }
};

// One verification, whose state Windows keeps until it is closed.
class Verification
{
public:
    Verification(const Functions& functions, HANDLE file, const wchar_t* path) : m_functions(functions)
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
    ~Verification() { Act(WTD_STATEACTION_CLOSE); }
    Verification(const Verification&) = delete;
    Verification& operator=(const Verification&) = delete;

    LONG Verify() { return Act(WTD_STATEACTION_VERIFY); }

    // What Windows found out; it lives as long as this. Null where it found nothing.
    CRYPT_PROVIDER_DATA* Data() const { return m_functions.findData(m_data.hWVTStateData); }

private:
    LONG Act(DWORD action)
    {
        m_data.dwStateAction = action;
        GUID authenticode = WINTRUST_ACTION_GENERIC_VERIFY_V2;
        return m_functions.verify(static_cast<HWND>(INVALID_HANDLE_VALUE), &authenticode, &m_data);
    }

    const Functions& m_functions;
    WINTRUST_FILE_INFO m_file{};
    WINTRUST_DATA m_data{};
};

// WinVerifyTrust has done the same on Windows. Wine 8 does not come to it, and reports success, where a
// certificate is signed with SHA-256.
LONG VerifyCertificates(
    const Functions& functions, const CRYPT_PROVIDER_DATA& data, const CRYPT_PROVIDER_SGNR& signer)
{
    AUTHENTICODE_EXTRA_CERT_CHAIN_POLICY_PARA settings{};
    settings.cbSize = sizeof settings;
    settings.dwRegPolicySettings = data.dwRegPolicySettings;
    settings.pSignerInfo = signer.psSigner;
    CERT_CHAIN_POLICY_PARA policy{};
    policy.cbSize = sizeof policy;
    policy.dwFlags = CERT_CHAIN_POLICY_IGNORE_ALL_REV_UNKNOWN_FLAGS;
    policy.pvExtraPolicyPara = &settings;
    CERT_CHAIN_POLICY_STATUS status{};
    status.cbSize = sizeof status;
    if (!functions.verifyChain(CERT_CHAIN_POLICY_AUTHENTICODE, signer.pChainContext, &policy, &status)) {
        return TRUST_E_SYSTEM_ERROR;
    }
    return static_cast<LONG>(status.dwError);
}

std::wstring NameOfSigner(const Functions& functions, const CERT_CHAIN_CONTEXT& certificates)
{
    const auto read = [&](wchar_t* name, DWORD capacity) {
        const CERT_CONTEXT* const signer = certificates.rgpChain[0]->rgpElement[0]->pCertContext;
        return functions.readName(signer, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name, capacity);
    };
    std::wstring name(read(nullptr, 0), L'\0');
    read(name.data(), static_cast<DWORD>(name.size()));
    // Without the terminating NUL; one within the name stays, since what stands before it is another name.
    name.pop_back();
    return name;
}

} // namespace

Signature ReadSignature(HANDLE file, const wchar_t* path)
{
    const Functions functions;
    if (!functions.AreFound()) {
        return {TRUST_E_SYSTEM_ERROR, 0, {}};
    }
    Verification verification(functions, file, path);
    const LONG status = verification.Verify();
    CRYPT_PROVIDER_DATA* const data = verification.Data();
    const CRYPT_PROVIDER_SGNR* const signer = data ? functions.findSigner(data, 0, FALSE, 0) : nullptr;
    if (!signer || !signer->pChainContext) {
        return {status == 0 ? TRUST_E_SYSTEM_ERROR : status, 0, {}};
    }
    return {
        status == 0 ? VerifyCertificates(functions, *data, *signer) : status,
        signer->pChainContext->TrustStatus.dwErrorStatus, NameOfSigner(functions, *signer->pChainContext)};
}

} // namespace product_services_guard
