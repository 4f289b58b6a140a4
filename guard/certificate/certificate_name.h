// Names in a certificate.
#pragma once

#include <string>
#include <windows.h>

#include <wincrypt.h>

namespace product_services_guard {

/// Returns the subject's name as Windows shows it or, with CERT_NAME_ISSUER_FLAG, the issuer's. A NUL within
/// the name is kept, because the part before it would be a different name.
std::wstring GetCertificateName(PCCERT_CONTEXT certificate, DWORD flags);

/// Returns the common name of the subject; empty if it has none, with no other name as a fallback. A NUL is
/// kept, too.
std::wstring GetCommonName(PCCERT_CONTEXT certificate);

} // namespace product_services_guard
