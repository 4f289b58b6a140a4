// curl_formfree is called deliberately, although libcurl has deprecated it.
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

// The reply buffer of the process. Every post clears it; then ReceiveReplyChunk or a failure document fills
// it.
std::string replyBuffer;

// {"status":0,"error":"Failed to connect() to host or proxy."}
std::string MakeFailureDocument(CURLcode code)
{
    std::wstring document;
    document = L"{\"status\":0,\"error\":\"";
    if (const wchar_t* text = FindCurlErrorText(code)) {
        if (code == CURLE_HTTP_POST_ERROR) {
            // Deliberate: the text of this code replaces the beginning, so the document is not valid JSON.
            document = text;
        } else {
            // Deliberate: the text is not escaped, so a text with quotation marks does not result in JSON
            // either.
            document += text;
        }
    }
    document += L"\"}";
    return ToUtf8(document);
}

void PerformTransfer(CURL* handle, const std::string& address, const std::string& body)
{
    // Deliberate: nothing else is set here. There is no timeout, redirects are not followed, and the body of
    // an HTTP error is a reply like any other.
    curl_easy_setopt(handle, CURLOPT_URL, address.c_str());
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, ReceiveReplyChunk);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
    CurrentEnvironment->PrepareTransfer(handle);
    const CURLcode result = curl_easy_perform(handle);
    CurrentEnvironment->OnTransferDone(handle, result, replyBuffer);
    if (result != CURLE_OK) {
        replyBuffer = MakeFailureDocument(result);
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
    // Deliberate: the list is created but never attached, so libcurl sends its own headers.
    curl_slist* headers = curl_slist_append(nullptr, "Expect:");
    // Deliberate: without a handle nothing is released, not even the list.
    if (handle) {
        PerformTransfer(handle, address, body);
        curl_easy_cleanup(handle);
        curl_formfree(nullptr);
        curl_slist_free_all(headers);
    }
    // Deliberate: the arrow is not restored here, but only when Windows next sets the cursor.
    CurrentEnvironment->ShowWaitCursor();
    return replyBuffer;
}

bool IsServiceReachable()
{
    try {
        return ToWide(Post("", endpoints::CheckUrl)) == L"1";
    } catch (const std::range_error&) {
        return false;
    }
}

std::size_t ReceiveReplyChunk(const char* data, std::size_t size, std::size_t count, void*)
{
    const std::size_t bytes = size * count;
    // Deliberate: each chunk replaces the previous one, so only the last chunk of a reply is kept.
    replyBuffer.assign(data, bytes);
    return bytes;
}

} // namespace product_services::ServiceClient
