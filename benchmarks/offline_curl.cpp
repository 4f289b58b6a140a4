// Stands in for libcurl in a DLL of the library: answers a post at once with the working directory's
// reply.json, and the connectivity probe with "1".
#define CURL_DISABLE_DEPRECATION

#include "measure.h"

#include <cstdarg>
#include <curl/curl.h>
#include <string>

#undef curl_easy_setopt

static std::string offers = ReadReply();
static std::string probeAnswer = "1";
static std::string* answer = nullptr;
static curl_write_callback writeAnswer = nullptr;
static int handle;

extern "C" {

// When the last answer had arrived: its write function had returned.
__declspec(dllexport) double lastArrival = 0;

CURLcode curl_easy_setopt(CURL*, CURLoption option, ...)
{
    std::va_list arguments{};
    va_start(arguments, option);
    if (option == CURLOPT_URL) {
        const std::string address = va_arg(arguments, const char*);
        answer = address.ends_with("/check.php") ? &probeAnswer : &offers;
    } else if (option == CURLOPT_WRITEFUNCTION) {
        writeAnswer = va_arg(arguments, curl_write_callback);
    }
    va_end(arguments);
    return CURLE_OK;
}

CURLcode curl_easy_perform(CURL*)
{
    writeAnswer(answer->data(), 1, answer->size(), nullptr);
    lastArrival = Now();
    return CURLE_OK;
}

// clang-format off
CURLcode curl_global_init(long) { return CURLE_OK; }
CURL* curl_easy_init() { return &handle; }
void curl_easy_cleanup(CURL*) {}
curl_slist* curl_slist_append(curl_slist*, const char*) { return nullptr; }
void curl_slist_free_all(curl_slist*) {}
void curl_formfree(curl_httppost*) {}
// clang-format on

} // extern "C"
