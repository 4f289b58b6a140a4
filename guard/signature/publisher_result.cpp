#include "signature/publisher_result.h"

#include <iterator>

#include <strsafe.h>
#include <wincrypt.h>

namespace product_services_guard {
namespace {

struct StatusMapping
{
    HRESULT status;
    ProductServicesPublisherResult result;
    const wchar_t* text;
};

constexpr StatusMapping StatusMappings[] = {
    {TRUST_E_NOSIGNATURE, PRODUCT_SERVICES_PUBLISHER_NOT_SIGNED, L"The file is not signed."},
    {TRUST_E_SUBJECT_FORM_UNKNOWN, PRODUCT_SERVICES_PUBLISHER_NOT_SIGNED,
     L"This type of file cannot be signed."},
    {TRUST_E_BAD_DIGEST, PRODUCT_SERVICES_PUBLISHER_FILE_MODIFIED,
     L"The file was modified after it was signed."},
    {CERT_E_UNTRUSTEDROOT, PRODUCT_SERVICES_PUBLISHER_UNTRUSTED,
     L"The signature is not trusted: its certificate comes from an unknown issuer."},
    {CERT_E_CHAINING, PRODUCT_SERVICES_PUBLISHER_UNTRUSTED,
     L"The signature is not trusted: its certificate comes from an unknown issuer."},
    {CERT_E_EXPIRED, PRODUCT_SERVICES_PUBLISHER_UNTRUSTED,
     L"The signature is not trusted: its certificate has expired, and the signature has no valid timestamp."},
    {CERT_E_REVOKED, PRODUCT_SERVICES_PUBLISHER_UNTRUSTED,
     L"The signature is not trusted: its certificate has been revoked."},
    {CRYPT_E_REVOKED, PRODUCT_SERVICES_PUBLISHER_UNTRUSTED,
     L"The signature is not trusted: its certificate has been revoked."},
    {TRUST_E_EXPLICIT_DISTRUST, PRODUCT_SERVICES_PUBLISHER_UNTRUSTED,
     L"The signature is not trusted: its certificate is explicitly distrusted on this computer."},
    {CERT_E_WRONG_USAGE, PRODUCT_SERVICES_PUBLISHER_UNTRUSTED,
     L"The signature is not trusted: its certificate is not valid for code signing."},
    {CRYPT_E_FILE_ERROR, PRODUCT_SERVICES_PUBLISHER_FILE_ERROR, L"The file could not be read."},
    {E_OUTOFMEMORY, PRODUCT_SERVICES_PUBLISHER_FILE_ERROR, L"Not enough memory to verify the file."},
    {TRUST_E_SYSTEM_ERROR, PRODUCT_SERVICES_PUBLISHER_FILE_ERROR,
     L"Windows could not verify the signature."}};

PublisherResult ResultForStatus(LONG status)
{
    for (const StatusMapping& mapping : StatusMappings) {
        if (mapping.status == status) {
            return {mapping.result, mapping.text};
        }
    }
    wchar_t text[80];
    StringCchPrintfW(text, std::size(text), L"The signature is not trusted (Windows error 0x%08lX).", status);
    return {PRODUCT_SERVICES_PUBLISHER_UNTRUSTED, text};
}

// By default, Windows accepts a signature if it cannot reach an issuer. Only the certificates' errors show
// that.
bool IsRevocationUnknown(const Signature& signature)
{
    constexpr DWORD Unknown = CERT_TRUST_REVOCATION_STATUS_UNKNOWN | CERT_TRUST_IS_OFFLINE_REVOCATION;
    switch (signature.status) {
    case 0:
        return (signature.certificateErrors & Unknown) != 0;
    case CERT_E_REVOCATION_FAILURE:
    case CRYPT_E_REVOCATION_OFFLINE:
    case CRYPT_E_NO_REVOCATION_CHECK:
        return true;
    default:
        return false;
    }
}

// Empty lines are ignored.
bool IsListed(std::wstring_view names, std::wstring_view name)
{
    while (!name.empty() && !names.empty()) {
        const std::size_t end = names.find(L'\n');
        if (names.substr(0, end) == name) {
            return true;
        }
        names.remove_prefix(end == names.npos ? names.size() : end + 1);
    }
    return false;
}

} // namespace

PublisherResult EvaluateSignature(const Signature& signature, std::wstring_view publishers)
{
    if (signature.certificateErrors & CERT_TRUST_IS_REVOKED) {
        return ResultForStatus(CERT_E_REVOKED);
    }
    const bool isRevocationUnknown = IsRevocationUnknown(signature);
    if (signature.status != 0 && !isRevocationUnknown) {
        return ResultForStatus(signature.status);
    }
    if (!IsListed(publishers, signature.signer)) {
        return {
            PRODUCT_SERVICES_PUBLISHER_MISMATCH,
            L"The file is signed by another publisher: " + signature.signer};
    }
    if (signature.hasAppendedData) {
        return {
            PRODUCT_SERVICES_PUBLISHER_DATA_APPENDED,
            L"Data was appended to the file after " + signature.signer + L" had signed it."};
    }
    if (isRevocationUnknown) {
        return {
            PRODUCT_SERVICES_PUBLISHER_REVOCATION_UNKNOWN,
            L"The file is signed by " + signature.signer +
                L", but the revocation status of a certificate could not be checked."};
    }
    return {
        PRODUCT_SERVICES_PUBLISHER_TRUSTED,
        L"The file is signed by " + signature.signer + L" and unmodified."};
}

} // namespace product_services_guard
