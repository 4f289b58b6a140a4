// The environment of a guarded call, which also records what happens during the call.
#pragma once

#include "calls/transfer_limits.h"
#include "host/host_environment.h"
#include "product_services/guarded_calls.h"

#include <cstdint>
#include <optional>
#include <string>

namespace product_services_guard {

/// What happened during a call.
struct CallEvents
{
    /// The last result that the library reported.
    std::optional<std::uint32_t> resultCode;
    std::wstring resultText;
    /// The message that the library showed, or suppressed because the call is quiet.
    std::optional<product_services::TextId> message;
    std::wstring messageText;
    /// The purchase URL that was not opened because it is not trusted.
    std::wstring blockedUrl;

    /// The number of transfers, and the result of the last one.
    int transferCount = 0;
    CURLcode transferResult = CURLE_OK;
    std::wstring transferError;
    std::string reply;
    /// Why the service's certificate was rejected; empty if it was not.
    std::wstring certificateError;
    bool isCancelled = false;
    bool isTimedOut = false;
};

class GuardedEnvironment final : public product_services::HostEnvironment
{
public:
    /// The parameters must outlive the environment.
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

    /// libcurl's pre-request callback, which runs after the TLS handshake and before the request.
    static int OnConnected(void* environment, char*, char*, int, int);

    const GuardedCallParams& m_params;
    TransferLimits m_limits;
    CallEvents m_events;
    CURL* m_handle = nullptr;
    char m_errorBuffer[CURL_ERROR_SIZE] = {};
};

} // namespace product_services_guard
