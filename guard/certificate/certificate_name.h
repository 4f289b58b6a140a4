// Names in a certificate.
#pragma once

#include <string>
#include <windows.h>

#include <wincrypt.h>

namespace product_services_guard {

/// The subject's name as Windows shows it or, with CERT_NAME_ISSUER_FLAG, the issuer's. A NUL within the name
/// stays: what comes before it is another name.
std::wstring GetCertificateName(PCCERT_CONTEXT certificate, DWORD flags);

/// The common name of the subject and nothing in its place; empty if it has none. A NUL stays here, too.
std::wstring GetCommonName(PCCERT_CONTEXT certificate);

} // namespace product_services_guard
