#pragma once

#include <cstddef>
#include <string>

/// The only connection to the product service: a blocking HTTPS form post on the calling thread.
namespace product_services::ServiceClient {

/// Posts a form `body` (UTF-8) to `url` and returns the text of the reply. If the transfer fails, it returns
/// a refusal document as the service itself would send it, {"status":0,"error":"..."}. Empty if the service
/// sent nothing or libcurl could not be initialised. Must not be called while another post is in progress.
std::string Post(std::string body, std::wstring url);

/// Returns true if the service answers the connectivity probe with exactly "1".
bool IsServiceReachable();

/// libcurl's write function for `Post`.
std::size_t ReceiveReplyChunk(const char* data, std::size_t size, std::size_t count, void* user);

} // namespace product_services::ServiceClient
