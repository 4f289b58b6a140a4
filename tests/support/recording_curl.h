// Stands in for libcurl at link time, in the one source that includes this: records the calls and answers as
// told.
#pragma once

#include <cstdarg>
#include <curl/curl.h>
#include <string>
#include <vector>
#include <windows.h>

#undef curl_easy_setopt

// What it answers with.
inline bool givesHandle = true;
inline std::string reply; ///< Of an even length, since it is passed in elements of two bytes.
inline CURLcode result = CURLE_OK;

// What it saw.
inline std::vector<std::string> calls;
inline HCURSOR cursorDuringTransfer = nullptr;

inline curl_write_callback writeReply = nullptr;
inline int handleObject;
inline curl_slist listObject{};

CURLcode curl_global_init(long flags)
{
    calls.push_back("global_init " + std::to_string(flags));
    return CURLE_OK;
}

CURL* curl_easy_init()
{
    calls.push_back("easy_init");
    return givesHandle ? &handleObject : nullptr;
}

CURLcode curl_easy_setopt(CURL*, CURLoption option, ...)
{
    std::va_list arguments;
    va_start(arguments, option);
    std::string value;
    if (option == CURLOPT_WRITEFUNCTION) {
        writeReply = va_arg(arguments, curl_write_callback);
    } else {
        value = option < CURLOPTTYPE_OBJECTPOINT ? std::to_string(va_arg(arguments, long))
                                                 : va_arg(arguments, const char*);
    }
    va_end(arguments);
    calls.push_back("setopt " + std::to_string(option) + " " + value);
    return CURLE_OK;
}

CURLcode curl_easy_perform(CURL*)
{
    cursorDuringTransfer = SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    writeReply(reply.data(), 2, reply.size() / 2, nullptr);
    calls.push_back("perform");
    return result;
}

void curl_easy_cleanup(CURL* handle)
{
    calls.push_back(handle == &handleObject ? "cleanup" : "cleanup of something else");
}

curl_slist* curl_slist_append(curl_slist* list, const char* text)
{
    calls.push_back(std::string(list ? "append " : "append first ") + text);
    return &listObject;
}

void curl_slist_free_all(curl_slist* list)
{
    calls.push_back(list == &listObject ? "free list" : "free something else");
}

void curl_formfree(curl_httppost* form)
{
    calls.push_back(form ? "free form" : "free null form");
}
