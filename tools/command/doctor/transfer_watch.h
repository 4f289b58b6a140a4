// Watches a transfer of the library from within.
#pragma once

#include <chrono>
#include <curl/curl.h>
#include <functional>
#include <string>
#include <vector>

namespace product_services_tool {

/// What a transfer is waiting for, in this order.
enum class TransferStep
{
    Name,         ///< The look-up of a name.
    Connection,   ///< With the server, or with the proxy before it.
    TlsAnswer,    ///< The first byte from there.
    TlsHandshake, ///< Its end.
    ReplyStart,
    ReplyEnd
};

/// What was seen of a transfer.
struct TransferReport
{
    TransferStep step = TransferStep::Name;
    /// The step took too long, and the transfer was given up.
    bool isTimedOut = false;
    CURLcode result = CURLE_FAILED_INIT;
    /// libcurl's text for the result, or that of an exception before the transfer.
    std::wstring error = {};
    /// What libcurl said on the way.
    std::vector<std::wstring> lines = {};
    /// Whose the certificate is, by whom and until when.
    std::wstring certificate = {};
    /// Why a guarded call would refuse it; empty if it would not.
    std::wstring certificateError = {};
    long httpStatus = 0;
    std::wstring redirectUrl = {};
    int pieceCount = 0;
    /// As the library has it: the last piece.
    std::string reply = {};
    /// libcurl's times from the start, in microseconds; 0 for what was not reached.
    curl_off_t nameTime = 0;
    curl_off_t connectTime = 0;
    curl_off_t tlsTime = 0;
    curl_off_t replyTime = 0;
};

struct TransferSettings
{
    /// For libcurl, unless it is empty.
    std::string proxy = {};
    /// Whether to send nothing to a server whose certificate a guarded call would refuse.
    bool requiresCertificate = false;
    std::chrono::seconds stepTimeout{5};
};

/// Runs `transfer`, which makes one transfer of the library and owns all that it uses, in a thread of its
/// own. If the look-up of a name takes too long, it cannot be ended, and the library must not be called
/// again: that report has timed out in TransferStep::Name.
TransferReport WatchTransfer(const TransferSettings& settings, std::function<void()> transfer);

} // namespace product_services_tool
