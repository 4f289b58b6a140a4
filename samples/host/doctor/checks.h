// The checks of the doctor, each of one thing.
#pragma once

#include "doctor.h"
#include "finding.h"
#include "record.h"
#include "route.h"
#include "web_request.h"

namespace doctor {

/// A DLL beside the program, such as "ProductServices.dll": there, its path, version and machine type.
Finding CheckLibrary(const wchar_t* name);

/// Whether the DLL is signed, and by whom.
Finding CheckSignature(const wchar_t* name);

Finding CheckApiKey(const std::wstring& apiKey);
Finding CheckRecord(const Patient& patient, const Record& record);
/// A member of the record that was found: "key" or "version".
Finding CheckMember(const wchar_t* name, const Member& member);

/// The language file of a language id below the working directory.
Finding CheckLanguageFile(int languageId);

/// The proxy that environment variables name for the service.
Finding CheckProxyVariables(const Route& route);
/// The proxy that Windows names for the service.
Finding CheckWindowsProxy(const std::wstring& serviceAddress);

/// Whether the name of the service, or of the proxy before it, is known.
Finding CheckName(const Server& server);
Finding CheckConnection(const Server& server);
/// TLS as far as the probe got, with the certificate.
Finding CheckTls(const WebAnswer& probe);
Finding CheckProbe(const WebAnswer& probe);
/// The update query, its reply read as the library reads it.
Finding CheckQuery(const Patient& patient, const Record& record, const Route& route);

/// A quiet check through the guard, which is what a host gets. None is made of a service that hangs.
Finding CheckCall(product_services::Product product, bool isServiceHanging);

/// The scale of the screen.
Finding CheckScreen();

} // namespace doctor
