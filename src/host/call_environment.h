#pragma once

#include "text/text_table.h"

#include <cstdint>
#include <curl/curl.h>
#include <string>

namespace product_services {

/// What a call does to the world outside it: to the host, to the user and to the network. A call runs in one
/// environment, which its frame makes the current one.
class CallEnvironment
{
public:
    /// Writes the outcome to the host: a result code with its message or, with 200, the download address.
    virtual void WriteResult(std::uint32_t resultCode, const std::wstring& text) = 0;

    /// Tells the user the text of `id`.
    virtual void ShowMessage(TextId id) = 0;

    /// Opens a purchase address for the user.
    virtual void OpenUrl(const std::wstring& url) = 0;

    /// Shows that the call is busy.
    virtual void ShowWaitCursor() = 0;

    /// Called when the transport has set its options, before the transfer, so that an environment can set
    /// more.
    virtual void PrepareTransfer(CURL* handle) = 0;

    /// Called after the transfer: how it ended, and the reply, which is incomplete unless `result` is
    /// CURLE_OK.
    virtual void OnTransferDone(CURL* handle, CURLcode result, const std::string& reply) = 0;

protected:
    ~CallEnvironment() = default;
};

} // namespace product_services
