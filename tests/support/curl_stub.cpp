#include "curl_stub.h"

#include <cstdarg>

#undef curl_easy_setopt

std::vector<std::string> curlCalls;
bool curlInitSucceeds = true;

namespace {

CurlTransfer transfer; // one at a time
curl_slist list{};

const char* NameOrNull(bool isNull, const char* name)
{
    return isNull ? "null" : name;
}

// Stores the options that a transfer needs, and returns the value to be recorded.
std::string StoreOption(CURLoption option, std::va_list& arguments)
{
    if (option == CURLOPT_WRITEFUNCTION) {
        transfer.write = va_arg(arguments, curl_write_callback);
        return "function";
    }
    if (option < CURLOPTTYPE_OBJECTPOINT) {
        return std::to_string(va_arg(arguments, long));
    }
    const char* text = va_arg(arguments, const char*);
    if (option == CURLOPT_URL) {
        transfer.url = text;
    } else if (option == CURLOPT_POSTFIELDS) {
        transfer.body = text;
    }
    return text;
}

} // namespace

CURLcode curl_global_init(long flags)
{
    curlCalls.push_back("global_init " + std::to_string(flags));
    return CURLE_OK;
}

CURL* curl_easy_init()
{
    curlCalls.emplace_back("easy_init");
    return curlInitSucceeds ? &transfer : nullptr;
}

CURLcode curl_easy_setopt(CURL*, CURLoption option, ...)
{
    std::va_list arguments{};
    va_start(arguments, option);
    const std::string value = StoreOption(option, arguments);
    va_end(arguments);
    curlCalls.push_back("setopt " + std::to_string(option) + " " + value);
    return CURLE_OK;
}

CURLcode curl_easy_perform(CURL*)
{
    curlCalls.emplace_back("perform");
    return PerformTransfer(transfer);
}

void curl_easy_cleanup(CURL* handle)
{
    curlCalls.push_back(std::string("cleanup ") + NameOrNull(!handle, "handle"));
}

curl_slist* curl_slist_append(curl_slist* previous, const char* text)
{
    curlCalls.push_back(std::string("slist_append ") + NameOrNull(!previous, "list") + " " + text);
    return &list;
}

void curl_slist_free_all(curl_slist* freed)
{
    curlCalls.push_back(std::string("slist_free_all ") + NameOrNull(!freed, "list"));
}

void curl_formfree(curl_httppost* form)
{
    curlCalls.push_back(std::string("formfree ") + NameOrNull(!form, "form"));
}
