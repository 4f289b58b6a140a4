// curl_formfree is called on purpose, though libcurl has deprecated it.
#define CURL_DISABLE_DEPRECATION

#include "service/service_client.h"

#include "host/call_environment.h"
#include "host/current_call.h"
#include "service/curl_error_texts.h"
#include "service/endpoints.h"
#include "service/text_conversion.h"

#include <curl/curl.h>
#include <stdexcept>

namespace product_services::ServiceClient {
namespace {

// One for the process: emptied by every post, filled by ReceiveReplyChunk or with a failure document.
std::string replyBuffer;

// {"status":0,"error":"Failed to connect() to host or proxy."}
std::string FailureDocument(CURLcode code)
{
    std::wstring document;
    document = L"{\"status\":0,\"error\":\"";
    if (const wchar_t* text = FindCurlErrorText(code)) {
        if (code == CURLE_HTTP_POST_ERROR) {
            // Deliberate: this code's text replaces what stands before it, so the document is no JSON.
            document = text;
        } else {
            // Deliberate: not escaped, so that texts with a quotation mark in them make no JSON either.
            document += text;
        }
    }
    document += L"\"}";
    return ToUtf8(document);
}

void Transfer(CURL* handle, const std::string& address, const std::string& body)
{
    // Deliberate: nothing else is set here. No timeout, no redirects, and the text of an HTTP error is a
    // reply.
    curl_easy_setopt(handle, CURLOPT_URL, address.c_str());
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, ReceiveReplyChunk);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
    CurrentEnvironment->PrepareTransfer(handle);
    const CURLcode result = curl_easy_perform(handle);
    CurrentEnvironment->OnTransferDone(handle, result, replyBuffer);
    if (result != CURLE_OK) {
        replyBuffer = FailureDocument(result);
    }
}

} // namespace

std::string Post(std::string body, std::wstring url)
{
    const std::string address = ToUtf8(url);
    CurrentEnvironment->ShowWaitCursor();
    replyBuffer.clear();
    curl_global_init(CURL_GLOBAL_ALL);
    CURL* handle = curl_easy_init();
    // Deliberate: the list is made but never attached, so libcurl's own headers go out.
    curl_slist* headers = curl_slist_append(nullptr, "Expect:");
    // Deliberate: without a handle nothing is released, the list included.
    if (handle) {
        Transfer(handle, address, body);
        curl_easy_cleanup(handle);
        curl_formfree(nullptr);
        curl_slist_free_all(headers);
    }
    // Deliberate: the arrow comes back when the window system next sets the cursor, not here.
    CurrentEnvironment->ShowWaitCursor();
    return replyBuffer;
}

bool IsServiceReachable()
{
    try {
        return ToWide(Post("", endpoints::Check)) == L"1";
    } catch (const std::range_error&) {
        return false;
    }
}

std::size_t ReceiveReplyChunk(const char* data, std::size_t size, std::size_t count, void*)
{
    const std::size_t bytes = size * count;
    // Deliberate: each piece replaces the one before it; of a reply in pieces the last one stays.
    replyBuffer.assign(data, bytes);
    return bytes;
}

} // namespace product_services::ServiceClient
