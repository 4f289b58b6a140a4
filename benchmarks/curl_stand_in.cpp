#include "curl_stand_in.h"

#include <cstdarg>

#undef curl_easy_setopt

std::vector<std::string> curlCalls;
bool curlGivesHandle = true;

namespace {

CurlTransfer transfer; // there is one at a time
curl_slist list{};

const char* NameOf(bool isNull, const char* name)
{
    return isNull ? "null" : name;
}

// Keeps what a transfer needs, and gives the value to be noted.
std::string TakeOption(CURLoption option, std::va_list& arguments)
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
    return curlGivesHandle ? &transfer : nullptr;
}

CURLcode curl_easy_setopt(CURL*, CURLoption option, ...)
{
    std::va_list arguments{};
    va_start(arguments, option);
    const std::string value = TakeOption(option, arguments);
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
    curlCalls.push_back(std::string("cleanup ") + NameOf(!handle, "handle"));
}

curl_slist* curl_slist_append(curl_slist* former, const char* text)
{
    curlCalls.push_back(std::string("slist_append ") + NameOf(!former, "list") + " " + text);
    return &list;
}

void curl_slist_free_all(curl_slist* freed)
{
    curlCalls.push_back(std::string("slist_free_all ") + NameOf(!freed, "list"));
}

void curl_formfree(curl_httppost* form)
{
    curlCalls.push_back(std::string("formfree ") + NameOf(!form, "form"));
}
