#pragma once

#include "route.h"

#include <string>
#include <windows.h>

namespace doctor {

/// What came of a request.
struct WebAnswer
{
    enum class Stage
    {
        /// Nothing was sent within TLS; `error` says why.
        NotSent,
        /// No whole reply came.
        NotAnswered,
        Answered
    };

    Stage stage = Stage::NotSent;
    /// Windows' number; ERROR_WINHTTP_TIMEOUT where the time was over.
    DWORD error = 0;
    /// Of HTTP.
    DWORD status = 0;
    std::string body;
    /// The certificate's name, issuer and dates, as a text to be shown.
    std::wstring certificate;
};

/// Posts a form, which has five seconds to be sent and five to be answered, and follows no redirect. As in
/// the library, any certificate will do.
WebAnswer Post(const std::wstring& address, const std::string& body, const Route& route);

/// Why there is no answer, for the middle of a sentence.
std::wstring Cause(const WebAnswer& answer);

/// The row of a request without an answer: rows::Hanging where the time was over, else `otherwise`.
const wchar_t* RowOf(const WebAnswer& answer, const wchar_t* otherwise);

} // namespace doctor
