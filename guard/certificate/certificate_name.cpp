#include "certificate/certificate_name.h"

namespace product_services_guard {
namespace {

std::wstring GetName(PCCERT_CONTEXT certificate, DWORD type, DWORD flags, void* parameter)
{
    const DWORD capacity = CertGetNameStringW(certificate, type, flags, parameter, nullptr, 0);
    std::wstring name(capacity, L'\0');
    CertGetNameStringW(certificate, type, flags, parameter, name.data(), capacity);
    name.pop_back(); // the terminating NUL
    return name;
}

} // namespace

std::wstring GetCertificateName(PCCERT_CONTEXT certificate, DWORD flags)
{
    return GetName(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, flags, nullptr);
}

std::wstring GetCommonName(PCCERT_CONTEXT certificate)
{
    char commonName[] = szOID_COMMON_NAME;
    return GetName(certificate, CERT_NAME_ATTR_TYPE, 0, commonName);
}

} // namespace product_services_guard
