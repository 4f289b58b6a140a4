#pragma once

#include "text/text_table.h"

#include <cstdint>
#include <curl/curl.h>
#include <string>

namespace product_services {

/// Everything that a call does to the outside world: to the host, the user and the network. The call frame
/// makes one environment the current one for the whole call.
class CallEnvironment
{
public:
    /// Passes the result to the host: a result code with its message or, with 200, the download address.
    virtual void WriteResult(std::uint32_t resultCode, const std::wstring& text) = 0;

    /// Shows the user the text of `id`.
    virtual void ShowMessage(TextId id) = 0;

    /// Opens a purchase address for the user.
    virtual void OpenUrl(const std::wstring& url) = 0;

    virtual void ShowWaitCursor() = 0;

    /// Called before each transfer, when the transport has set its own options, so that an environment can
    /// set more.
    virtual void PrepareTransfer(CURL* handle) = 0;

    /// Called after each transfer with its result and its reply, which is incomplete unless `result` is
    /// CURLE_OK.
    virtual void OnTransferDone(CURL* handle, CURLcode result, const std::string& reply) = 0;

protected:
    ~CallEnvironment() = default;
};

} // namespace product_services
