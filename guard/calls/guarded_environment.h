// What a guarded call does to the world outside it, and what it learns there.
#pragma once

#include "calls/transfer_limits.h"
#include "host/host_environment.h"
#include "product_services/guarded_calls.h"

#include <optional>
#include <string>

namespace product_services_guard {

/// What happened during a call.
struct CallEvents
{
    /// What the library reported to the host.
    std::optional<std::uint32_t> resultCode;
    std::wstring resultText;
    /// The message that the library showed, or would have shown if the call were not quiet.
    std::optional<product_services::TextId> message;
    std::wstring messageText;
    /// A purchase URL that was not opened.
    std::wstring blockedUrl;

    /// The transfers that were made, and how the last one ended.
    int transferCount = 0;
    CURLcode transferResult = CURLE_OK;
    std::wstring transferError;
    std::string reply;
    /// Why the service's certificate was refused.
    std::wstring certificateError;
    bool isCancelled = false;
    bool isTimedOut = false;
};

/// The environment of a guarded call.
class GuardedEnvironment final : public product_services::HostEnvironment
{
public:
    /// The parameters stay the caller's and outlive this.
    explicit GuardedEnvironment(const GuardedCallParams& params);

    void WriteResult(std::uint32_t resultCode, const std::wstring& text) override;
    void ShowMessage(product_services::TextId id) override;
    void OpenUrl(const std::wstring& url) override;
    void ShowWaitCursor() override;
    void PrepareTransfer(CURL* handle) override;
    void OnTransferDone(CURL* handle, CURLcode result, const std::string& reply) override;

    const CallEvents& Events() const { return m_events; }

private:
    bool HasOption(ProductServicesOptions option) const { return (m_params.options & option) != 0; }
    void SetSystemProxy(CURL* handle);

    /// libcurl's pre-request callback: after the TLS handshake, before the request.
    static int OnConnected(void* environment, char*, char*, int, int);

    const GuardedCallParams& m_params;
    TransferLimits m_limits;
    CallEvents m_events;
    CURL* m_handle = nullptr;
    char m_errorBuffer[CURL_ERROR_SIZE] = {};
};

} // namespace product_services_guard
