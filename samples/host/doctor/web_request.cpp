#include "web_request.h"

#include "rows.h"
#include "within_time.h"

#include <atomic>
#include <memory>

#include <wincrypt.h>
#include <winhttp.h>

namespace doctor {
namespace {

using std::chrono::seconds;

// From then on Windows calls a host that waits "not responding".
constexpr seconds Limit{5};
constexpr std::size_t LargestBody = 1 << 20;

struct Closed
{
    void operator()(HINTERNET handle) const { WinHttpCloseHandle(handle); }
};
using Handle = std::unique_ptr<void, Closed>;

// Of a worker, which runs on where the time is over; `isSent` is then looked at, and what was set before it.
struct Request
{
    std::string body;
    Handle session;
    Handle connection;
    Handle request;
    std::wstring certificate;
    std::atomic<bool> isSent = false;
};

std::wstring NameIn(const CERT_CONTEXT* certificate, DWORD flags)
{
    wchar_t name[256] = {};
    CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, flags, nullptr, name, 256);
    return name;
}

std::wstring Day(const FILETIME& time)
{
    SYSTEMTIME day{};
    wchar_t text[32] = {};
    FileTimeToSystemTime(&time, &day);
    GetDateFormatEx(LOCALE_NAME_INVARIANT, 0, &day, L"yyyy-MM-dd", text, 32, nullptr);
    return text;
}

std::wstring ReadCertificate(HINTERNET request)
{
    const CERT_CONTEXT* certificate = nullptr;
    DWORD size = sizeof(void*);
    if (!WinHttpQueryOption(request, WINHTTP_OPTION_SERVER_CERT_CONTEXT, &certificate, &size)) {
        return {};
    }
    std::wstring text = L"for " + NameIn(certificate, 0) + L", issued by " +
                        NameIn(certificate, CERT_NAME_ISSUER_FLAG) + L", valid from " +
                        Day(certificate->pCertInfo->NotBefore) + L" to " +
                        Day(certificate->pCertInfo->NotAfter);
    CertFreeCertificateContext(certificate);
    return text;
}

void BeSent(Request& request, const std::wstring& certificate)
{
    if (!request.isSent) {
        request.certificate = certificate;
        request.isSent = true;
    }
}

// WinHttpSendRequest may return only with the reply. What goes to a proxy is sent without a certificate.
void CALLBACK Notice(HINTERNET handle, DWORD_PTR request, DWORD status, void*, DWORD)
{
    if (status != WINHTTP_CALLBACK_STATUS_REQUEST_SENT) {
        return;
    }
    const std::wstring certificate = ReadCertificate(handle);
    if (!certificate.empty()) {
        BeSent(*reinterpret_cast<Request*>(request), certificate);
    }
}

void SetOptions(HINTERNET request)
{
    DWORD flags = SECURITY_FLAG_IGNORE_UNKNOWN_CA | SECURITY_FLAG_IGNORE_CERT_DATE_INVALID |
                  SECURITY_FLAG_IGNORE_CERT_CN_INVALID | SECURITY_FLAG_IGNORE_CERT_WRONG_USAGE;
    WinHttpSetOption(request, WINHTTP_OPTION_SECURITY_FLAGS, &flags, sizeof flags);
    DWORD never = WINHTTP_OPTION_REDIRECT_POLICY_NEVER;
    WinHttpSetOption(request, WINHTTP_OPTION_REDIRECT_POLICY, &never, sizeof never);
    WinHttpSetStatusCallback(request, Notice, WINHTTP_CALLBACK_FLAG_SEND_REQUEST, 0);
}

// Reaches nobody yet.
std::shared_ptr<Request> Open(const std::wstring& address, const std::string& body, const Route& route)
{
    const std::wstring proxy = route.proxy.host.empty() ? L"" : Text(route.proxy);
    const std::size_t path = address.find(L'/', address.find(L"://") + 3);
    const auto port = static_cast<INTERNET_PORT>(std::stoul(route.service.port));
    auto request = std::make_shared<Request>();
    request->body = body;
    request->session.reset(WinHttpOpen(
        L"SampleHost doctor", proxy.empty() ? WINHTTP_ACCESS_TYPE_NO_PROXY : WINHTTP_ACCESS_TYPE_NAMED_PROXY,
        proxy.empty() ? WINHTTP_NO_PROXY_NAME : proxy.c_str(), WINHTTP_NO_PROXY_BYPASS, 0));
    request->connection.reset(WinHttpConnect(request->session.get(), route.service.host.c_str(), port, 0));
    request->request.reset(WinHttpOpenRequest(
        request->connection.get(), L"POST", address.substr(path).c_str(), nullptr, WINHTTP_NO_REFERER,
        WINHTTP_DEFAULT_ACCEPT_TYPES, WINHTTP_FLAG_SECURE));
    return request;
}

bool Send(Request& request)
{
    constexpr wchar_t Header[] = L"Content-Type: application/x-www-form-urlencoded\r\n";
    const auto length = static_cast<DWORD>(request.body.size());
    SetOptions(request.request.get());
    return WinHttpSendRequest(
        request.request.get(), Header, static_cast<DWORD>(-1), request.body.data(), length, length,
        reinterpret_cast<DWORD_PTR>(&request));
}

WebAnswer Failed(const Request& request, DWORD error)
{
    WebAnswer answer;
    answer.error = error;
    if (request.isSent) {
        answer.stage = WebAnswer::Stage::NotAnswered;
        answer.certificate = request.certificate;
    }
    return answer;
}

WebAnswer Ask(Request& request)
{
    if (!Send(request)) {
        return Failed(request, GetLastError());
    }
    const HINTERNET handle = request.request.get();
    BeSent(request, ReadCertificate(handle));
    WebAnswer answer;
    DWORD size = sizeof answer.status;
    if (!WinHttpReceiveResponse(handle, nullptr) ||
        !WinHttpQueryHeaders(
            handle, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER, nullptr, &answer.status, &size,
            nullptr)) {
        return Failed(request, GetLastError());
    }
    DWORD read = 0;
    do {
        char piece[4096];
        if (!WinHttpReadData(handle, piece, sizeof piece, &read)) {
            return Failed(request, GetLastError());
        }
        answer.body.append(piece, read);
    } while (read > 0 && answer.body.size() < LargestBody);
    answer.certificate = request.certificate;
    answer.stage = WebAnswer::Stage::Answered;
    return answer;
}

} // namespace

WebAnswer Post(const std::wstring& address, const std::string& body, const Route& route)
{
    const auto request = Open(address, body, route);
    if (!request->request) {
        return Failed(*request, GetLastError());
    }
    const auto answer = WithinTime(Limit, [=] { return Ask(*request); });
    return answer ? *answer : Failed(*request, ERROR_WINHTTP_TIMEOUT);
}

std::wstring Cause(const WebAnswer& answer)
{
    switch (answer.error) {
    case ERROR_WINHTTP_TIMEOUT:
        return answer.stage == WebAnswer::Stage::NotSent ? L"TLS was not ready within " + InWords(Limit)
                                                         : L"no whole reply within " + InWords(Limit);
    case ERROR_WINHTTP_CONNECTION_ERROR:
    case ERROR_WINHTTP_INVALID_SERVER_RESPONSE:
        return L"the connection was broken off (Windows error " + std::to_wstring(answer.error) + L")";
    default:
        return L"Windows error " + std::to_wstring(answer.error);
    }
}

const wchar_t* RowOf(const WebAnswer& answer, const wchar_t* otherwise)
{
    return answer.error == ERROR_WINHTTP_TIMEOUT ? rows::Hanging : otherwise;
}

} // namespace doctor
