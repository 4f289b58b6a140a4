// Observes a transfer of the library.
#pragma once

#include <chrono>
#include <curl/curl.h>
#include <functional>
#include <string>
#include <vector>

namespace product_services_tool {

/// The steps of a transfer, in order. A transfer waits for the end of its current step.
enum class TransferStep
{
    Name,         ///< The DNS lookup.
    Connection,   ///< The connection to the server, or to a proxy.
    TlsAnswer,    ///< The first byte of the answer.
    TlsHandshake, ///< The rest of the handshake.
    ReplyStart,   ///< The beginning of the reply.
    ReplyEnd      ///< The rest of the reply.
};

/// What was observed during a transfer.
struct TransferReport
{
    TransferStep step = TransferStep::Name;
    /// The step took too long, so the transfer was ended.
    bool isTimedOut = false;
    CURLcode result = CURLE_FAILED_INIT;
    /// libcurl's text for the result, or the text of an exception before the transfer.
    std::wstring error = {};
    /// libcurl's verbose messages.
    std::vector<std::wstring> lines = {};
    /// The certificate's subject, issuer and expiry date.
    std::wstring certificate = {};
    /// Why a guarded call would reject the certificate; empty if it would accept it.
    std::wstring certificateError = {};
    long httpStatus = 0;
    std::wstring redirectUrl = {};
    int pieceCount = 0;
    /// The reply as the library gets it, which is the last piece.
    std::string reply = {};
    /// libcurl's times from the start, in microseconds; 0 for a step that was not reached.
    curl_off_t nameTime = 0;
    curl_off_t connectTime = 0;
    curl_off_t tlsTime = 0;
    curl_off_t replyTime = 0;
};

struct TransferSettings
{
    /// The proxy that libcurl is to use, unless it is empty.
    std::string proxy = {};
    /// Whether to send nothing to a server whose certificate a guarded call would reject.
    bool requiresCertificate = false;
    std::chrono::seconds stepTimeout{5};
};

/// Runs `transfer` on a separate thread. It makes one transfer of the library and must own everything that it
/// uses. A DNS lookup cannot be ended: if the report has timed out in TransferStep::Name, the transfer is
/// still in progress, and the library must not be called again.
TransferReport WatchTransfer(const TransferSettings& settings, std::function<void()> transfer);

} // namespace product_services_tool
