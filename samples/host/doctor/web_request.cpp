#include "web_request.h"

#include "within_time.h"

#include <memory>

#include <wincrypt.h>
#include <winhttp.h>

namespace doctor {
namespace {

using std::chrono::seconds;

constexpr seconds Limit{10};
constexpr std::size_t LargestBody = 1 << 20;

struct Closed
{
    void operator()(HINTERNET handle) const { WinHttpCloseHandle(handle); }
};
using Handle = std::unique_ptr<void, Closed>;

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

void Receive(HINTERNET request, WebAnswer& answer)
{
    DWORD size = sizeof answer.status;
    if (!WinHttpReceiveResponse(request, nullptr) ||
        !WinHttpQueryHeaders(
            request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER, nullptr, &answer.status, &size,
            nullptr)) {
        answer.error = GetLastError();
        return;
    }
    DWORD read = 0;
    do {
        char piece[4096];
        if (!WinHttpReadData(request, piece, sizeof piece, &read)) {
            answer.error = GetLastError();
            return;
        }
        answer.body.append(piece, read);
    } while (read > 0 && answer.body.size() < LargestBody);
    answer.stage = WebAnswer::Stage::Answered;
}

void AcceptAnyCertificate(HINTERNET request)
{
    DWORD flags = SECURITY_FLAG_IGNORE_UNKNOWN_CA | SECURITY_FLAG_IGNORE_CERT_DATE_INVALID |
                  SECURITY_FLAG_IGNORE_CERT_CN_INVALID | SECURITY_FLAG_IGNORE_CERT_WRONG_USAGE;
    WinHttpSetOption(request, WINHTTP_OPTION_SECURITY_FLAGS, &flags, sizeof flags);
    DWORD never = WINHTTP_OPTION_REDIRECT_POLICY_NEVER;
    WinHttpSetOption(request, WINHTTP_OPTION_REDIRECT_POLICY, &never, sizeof never);
}

WebAnswer Send(HINTERNET request, std::string body)
{
    constexpr wchar_t Header[] = L"Content-Type: application/x-www-form-urlencoded\r\n";
    WebAnswer answer;
    AcceptAnyCertificate(request);
    const auto length = static_cast<DWORD>(body.size());
    if (!WinHttpSendRequest(request, Header, static_cast<DWORD>(-1), body.data(), length, length, 0)) {
        answer.error = GetLastError();
        return answer;
    }
    answer.stage = WebAnswer::Stage::NotAnswered;
    answer.certificate = ReadCertificate(request);
    Receive(request, answer);
    return answer;
}

WebAnswer Ask(const std::wstring& address, const std::string& body, const Route& route)
{
    const std::wstring proxy = route.proxy.host.empty() ? L"" : Text(route.proxy);
    const Handle session(WinHttpOpen(
        L"SampleHost doctor", proxy.empty() ? WINHTTP_ACCESS_TYPE_NO_PROXY : WINHTTP_ACCESS_TYPE_NAMED_PROXY,
        proxy.empty() ? WINHTTP_NO_PROXY_NAME : proxy.c_str(), WINHTTP_NO_PROXY_BYPASS, 0));
    const std::size_t path = address.find(L'/', address.find(L"://") + 3);
    const auto port = static_cast<INTERNET_PORT>(std::stoul(route.service.port));
    const Handle connection(WinHttpConnect(session.get(), route.service.host.c_str(), port, 0));
    const Handle request(WinHttpOpenRequest(
        connection.get(), L"POST", address.substr(path).c_str(), nullptr, WINHTTP_NO_REFERER,
        WINHTTP_DEFAULT_ACCEPT_TYPES, WINHTTP_FLAG_SECURE));
    if (!request) {
        WebAnswer answer;
        answer.error = GetLastError();
        return answer;
    }
    return Send(request.get(), body);
}

} // namespace

WebAnswer Post(const std::wstring& address, const std::string& body, const Route& route)
{
    const auto answer = WithinTime(Limit, [=] { return Ask(address, body, route); });
    if (answer) {
        return *answer;
    }
    WebAnswer late;
    late.error = ERROR_WINHTTP_TIMEOUT;
    return late;
}

std::wstring Cause(const WebAnswer& answer)
{
    switch (answer.error) {
    case ERROR_WINHTTP_TIMEOUT:
        return L"no answer within " + InWords(Limit);
    case ERROR_WINHTTP_CONNECTION_ERROR:
    case ERROR_WINHTTP_INVALID_SERVER_RESPONSE:
        return L"the connection was broken off (Windows error " + std::to_wstring(answer.error) + L")";
    default:
        return L"Windows error " + std::to_wstring(answer.error);
    }
}

} // namespace doctor
