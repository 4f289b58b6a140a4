#include "publisher_verdict.h"

#include <iterator>

#include <strsafe.h>
#include <wincrypt.h>

namespace product_services_guard {
namespace {

struct Failure
{
    HRESULT status;
    ProductServicesPublisher outcome;
    const wchar_t* text;
};

constexpr Failure Failures[] = {
    {TRUST_E_NOSIGNATURE, PRODUCT_SERVICES_PUBLISHER_NOT_SIGNED, L"The file is not signed."},
    {TRUST_E_SUBJECT_FORM_UNKNOWN, PRODUCT_SERVICES_PUBLISHER_NOT_SIGNED,
     L"The file is of a kind that cannot be signed."},
    {TRUST_E_BAD_DIGEST, PRODUCT_SERVICES_PUBLISHER_CHANGED, L"The file was changed after it was signed."},
    {CERT_E_UNTRUSTEDROOT, PRODUCT_SERVICES_PUBLISHER_NOT_TRUSTED,
     L"The signature is not trusted: its certificate comes from an unknown issuer."},
    {CERT_E_CHAINING, PRODUCT_SERVICES_PUBLISHER_NOT_TRUSTED,
     L"The signature is not trusted: its certificate comes from an unknown issuer."},
    {CERT_E_EXPIRED, PRODUCT_SERVICES_PUBLISHER_NOT_TRUSTED,
     L"The signature is not trusted: its certificate has expired, and no time stamp covers it."},
    {CERT_E_REVOKED, PRODUCT_SERVICES_PUBLISHER_NOT_TRUSTED,
     L"The signature is not trusted: its certificate has been revoked."},
    {CRYPT_E_REVOKED, PRODUCT_SERVICES_PUBLISHER_NOT_TRUSTED,
     L"The signature is not trusted: its certificate has been revoked."},
    {TRUST_E_EXPLICIT_DISTRUST, PRODUCT_SERVICES_PUBLISHER_NOT_TRUSTED,
     L"The signature is not trusted: its certificate is barred on this machine."},
    {CERT_E_WRONG_USAGE, PRODUCT_SERVICES_PUBLISHER_NOT_TRUSTED,
     L"The signature is not trusted: its certificate is not for signing programs."},
    {CRYPT_E_FILE_ERROR, PRODUCT_SERVICES_PUBLISHER_UNREADABLE, L"The file could not be read."},
    {E_OUTOFMEMORY, PRODUCT_SERVICES_PUBLISHER_UNREADABLE, L"There is not enough memory to verify the file."},
    {TRUST_E_SYSTEM_ERROR, PRODUCT_SERVICES_PUBLISHER_UNREADABLE,
     L"Windows could not verify the signature."}};

Verdict JudgeFailure(LONG status)
{
    for (const Failure& failure : Failures) {
        if (failure.status == status) {
            return {failure.outcome, failure.text};
        }
    }
    wchar_t sentence[80];
    StringCchPrintfW(
        sentence, std::size(sentence), L"The signature is not trusted (Windows error 0x%08lX).", status);
    return {PRODUCT_SERVICES_PUBLISHER_NOT_TRUSTED, sentence};
}

// By default, Windows lets a signature pass where it reaches no issuer; the certificates' errors say it.
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

} // namespace

Verdict Judge(const Signature& signature, const std::wstring& publisher)
{
    if (signature.certificateErrors & CERT_TRUST_IS_REVOKED) {
        return JudgeFailure(CERT_E_REVOKED);
    }
    const bool isRevocationUnknown = IsRevocationUnknown(signature);
    if (signature.status != 0 && !isRevocationUnknown) {
        return JudgeFailure(signature.status);
    }
    if (signature.signer != publisher) {
        return {
            PRODUCT_SERVICES_PUBLISHER_ANOTHER,
            L"The file is signed by another publisher: " + signature.signer};
    }
    if (isRevocationUnknown) {
        return {
            PRODUCT_SERVICES_PUBLISHER_REVOCATION_UNKNOWN,
            L"The file is signed by " + publisher +
                L", but whether a certificate has been revoked could not be found out."};
    }
    return {PRODUCT_SERVICES_PUBLISHER_TRUSTED, L"The file is signed by " + publisher + L" and unchanged."};
}

} // namespace product_services_guard
