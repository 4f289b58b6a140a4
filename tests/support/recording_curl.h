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
inline std::vector<std::string> pieces; ///< What the write callback gets, one call a piece.
inline CURLcode result = CURLE_OK;

// What it saw.
inline std::vector<std::string> calls;
inline HCURSOR cursorDuringTransfer = nullptr;

inline curl_write_callback writeReply = nullptr;
inline int handleObject;
inline curl_slist listObject{};

inline CURLcode Record(const std::string& call)
{
    calls.push_back(call);
    return CURLE_OK;
}

CURLcode curl_global_init(long flags)
{
    return Record("global_init " + std::to_string(flags));
}

CURL* curl_easy_init()
{
    Record("easy_init");
    return givesHandle ? &handleObject : nullptr;
}

CURLcode curl_easy_setopt(CURL*, CURLoption option, ...)
{
    std::va_list arguments;
    va_start(arguments, option);
    std::string value;
    if (option == CURLOPT_WRITEFUNCTION) {
        writeReply = va_arg(arguments, curl_write_callback);
    } else if (option < CURLOPTTYPE_OBJECTPOINT) {
        value = std::to_string(va_arg(arguments, long));
    } else {
        value = va_arg(arguments, const char*);
    }
    va_end(arguments);
    return Record("setopt " + std::to_string(option) + " " + value);
}

CURLcode curl_easy_perform(CURL*)
{
    cursorDuringTransfer = SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    for (std::string& piece : pieces) {
        // Two-byte elements where they fit, to see the size multiplied.
        const std::size_t size = piece.size() % 2 ? 1 : 2;
        if (writeReply(piece.data(), size, piece.size() / size, nullptr) != piece.size()) {
            return CURLE_WRITE_ERROR;
        }
    }
    Record("perform");
    return result;
}

void curl_easy_cleanup(CURL* handle)
{
    Record(handle == &handleObject ? "cleanup" : "cleanup of something else");
}

curl_slist* curl_slist_append(curl_slist* list, const char* text)
{
    Record(std::string(list ? "append " : "append first ") + text);
    return &listObject;
}

void curl_slist_free_all(curl_slist* list)
{
    Record(list == &listObject ? "free list" : "free something else");
}

void curl_formfree(curl_httppost* form)
{
    Record(form ? "free form" : "free null form");
}
