#define CURL_DISABLE_DEPRECATION

#include "support/instant_curl.h"

#include "support/measure.h"

#include <cstdarg>
#include <curl/curl.h>
#include <string_view>

#undef curl_easy_setopt

namespace {

std::string offersReply;
std::string probeReply = "1";
std::string* reply = nullptr;
curl_write_callback writeFunction = nullptr;
double lastArrival = 0;
int handleObject;
curl_slist listObject{};

} // namespace

namespace instant_curl {

void OfferProducts(int offers)
{
    offersReply = "[";
    for (int i = 0; i < offers; ++i) {
        offersReply += (i ? R"(,{"name":")" : R"({"name":")") + OfferName(i) +
                       R"(","version":"2026.2","url":"https://127.0.0.1/buy?offer=)" + std::to_string(i) +
                       "\"}";
    }
    offersReply += "]";
}

const std::string& OffersReply()
{
    return offersReply;
}

double LastArrival()
{
    return lastArrival;
}

std::string OfferName(int index)
{
    return "Example Product " + std::to_string(index);
}

} // namespace instant_curl

extern "C" {

CURLcode curl_global_init(long)
{
    return CURLE_OK;
}

CURL* curl_easy_init()
{
    return &handleObject;
}

CURLcode curl_easy_setopt(CURL*, CURLoption option, ...)
{
    std::va_list arguments;
    va_start(arguments, option);
    if (option == CURLOPT_URL) {
        const std::string_view url = va_arg(arguments, const char*);
        reply = url.ends_with("/check.php") ? &probeReply : &offersReply;
    } else if (option == CURLOPT_WRITEFUNCTION) {
        writeFunction = va_arg(arguments, curl_write_callback);
    }
    va_end(arguments);
    return CURLE_OK;
}

CURLcode curl_easy_perform(CURL*)
{
    writeFunction(reply->data(), 1, reply->size(), nullptr);
    lastArrival = Now();
    return CURLE_OK;
}

void curl_easy_cleanup(CURL*) {}

curl_slist* curl_slist_append(curl_slist*, const char*)
{
    return &listObject;
}

void curl_slist_free_all(curl_slist*) {}

void curl_formfree(curl_httppost*) {}

} // extern "C"
