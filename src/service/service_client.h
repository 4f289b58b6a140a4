#pragma once

#include <cstddef>
#include <string>

/// The one way to the product service: a blocking HTTPS form post, on the thread that calls.
namespace product_services::ServiceClient {

/// Posts a form `body` (UTF-8) to `url` and returns the reply's text. A failed transfer is no error: it
/// returns a refusal document as the service itself would send it, {"status":0,"error":"..."}. Empty where
/// the service sent nothing or libcurl could not be started. Not to be called while another post runs.
std::string Post(std::string body, std::wstring url);

/// True when the service answers the connectivity probe with exactly "1".
bool IsServiceReachable();

/// libcurl's write function for `Post`.
std::size_t ReceiveReplyChunk(const char* data, std::size_t size, std::size_t count, void* user);

} // namespace product_services::ServiceClient
