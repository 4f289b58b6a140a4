#include "calls/guarded_environment.h"

#include "calls/text_copy.h"
#include "certificate/server_certificate.h"
#include "host/current_call.h"
#include "proxy/system_proxy.h"
#include "url/service_endpoint.h"
#include "url/trusted_url.h"

#include <new>

namespace product_services_guard {

GuardedEnvironment::GuardedEnvironment(const GuardedCallParams& params)
    : m_params(params), m_limits(params.timeLimitMs, params.cancelFlag)
{
}

void GuardedEnvironment::WriteResult(std::uint32_t resultCode, const std::wstring& text)
{
    m_events.resultCode = resultCode;
    m_events.resultText = text;
}

void GuardedEnvironment::ShowMessage(product_services::TextId id)
{
    m_events.message = id;
    m_events.messageText = product_services::CurrentText(id);
    if (!HasOption(PRODUCT_SERVICES_OPTION_QUIET)) {
        HostEnvironment::ShowMessage(id);
    }
}

void GuardedEnvironment::OpenUrl(const std::wstring& url)
{
    if (IsTrustedUrl(url, m_params.trustedHosts)) {
        HostEnvironment::OpenUrl(url);
    } else {
        m_events.blockedUrl = url;
    }
}

void GuardedEnvironment::ShowWaitCursor()
{
    if (!HasOption(PRODUCT_SERVICES_OPTION_QUIET)) {
        HostEnvironment::ShowWaitCursor();
    }
}

void GuardedEnvironment::PrepareTransfer(CURL* handle)
{
    m_handle = handle;
    m_limits.StartClock();
    m_errorBuffer[0] = '\0';
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, m_errorBuffer);
    // From 8.3 on, libcurl compares the host name although it verifies nothing else. OnConnected does that,
    // too, and can say whose certificate it is.
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 0L);
    if (!HasOption(PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE)) {
        curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, OnConnected);
        curl_easy_setopt(handle, CURLOPT_PREREQDATA, this);
    }
    if (HasOption(PRODUCT_SERVICES_OPTION_SYSTEM_PROXY)) {
        SetSystemProxy(handle);
    }
    // This comes last, because the search for a proxy counts towards the time limit.
    m_limits.Apply(handle);
}

void GuardedEnvironment::SetSystemProxy(CURL* handle)
{
    const std::string proxy = FindSystemProxy(GetServiceEndpoint(), m_limits);
    if (!proxy.empty()) {
        curl_easy_setopt(handle, CURLOPT_PROXY, proxy.c_str());
    }
}

int GuardedEnvironment::OnConnected(void* environment, char*, char*, int, int)
{
    auto& self = *static_cast<GuardedEnvironment*>(environment);
    try {
        self.m_events.certificateError =
            VerifyServerCertificate(self.m_handle, GetServiceEndpoint().host, self.m_limits.RemainingMs());
    } catch (const std::bad_alloc&) {
        // No exception may pass through libcurl.
        return CURL_PREREQFUNC_ABORT;
    }
    return self.m_events.certificateError.empty() ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

void GuardedEnvironment::OnTransferDone(CURL*, CURLcode result, const std::string& reply)
{
    const bool isFailed = result != CURLE_OK;
    m_events.isCancelled = isFailed && m_limits.IsCancelled();
    m_events.isTimedOut = result == CURLE_OPERATION_TIMEDOUT || (isFailed && m_limits.IsTimeOver());
    m_limits.StopClock();
    ++m_events.transferCount;
    m_events.transferResult = result;
    m_events.transferError = FromUtf8(m_errorBuffer[0] ? m_errorBuffer : curl_easy_strerror(result));
    m_events.reply = reply;
}

} // namespace product_services_guard
