#define CURL_DISABLE_DEPRECATION
#define CURL_DISABLE_TYPECHECK

#include "support/recording_curl.h"

#include <cstdarg>

#undef curl_easy_setopt

RecordingCurl recordingCurl;

namespace {

int handleObject;
curl_slist listObject{};

CURLcode Record(const std::string& call)
{
    recordingCurl.calls.push_back(call);
    return CURLE_OK;
}

} // namespace

extern "C" {

CURLcode curl_global_init(long flags)
{
    return Record("global_init " + std::to_string(flags));
}

CURL* curl_easy_init()
{
    Record("easy_init");
    return recordingCurl.givesHandle ? &handleObject : nullptr;
}

CURLcode curl_easy_setopt(CURL*, CURLoption option, ...)
{
    std::va_list arguments;
    va_start(arguments, option);
    std::string value;
    if (option == CURLOPT_WRITEFUNCTION) {
        recordingCurl.write = va_arg(arguments, curl_write_callback);
    } else if (option < CURLOPTTYPE_OBJECTPOINT) {
        value = " " + std::to_string(va_arg(arguments, long));
    } else {
        value = std::string(" ") + va_arg(arguments, const char*);
    }
    va_end(arguments);
    return Record("setopt " + std::to_string(option) + value);
}

CURLcode curl_easy_perform(CURL*)
{
    Record("perform");
    recordingCurl.cursorDuringTransfer = SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    for (std::string& piece : recordingCurl.pieces) {
        // Two-byte elements where they fit, to see the size multiplied.
        const std::size_t size = piece.size() % 2 ? 1 : 2;
        if (recordingCurl.write(piece.data(), size, piece.size() / size, nullptr) != piece.size()) {
            return CURLE_WRITE_ERROR;
        }
    }
    return recordingCurl.result;
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

} // extern "C"
