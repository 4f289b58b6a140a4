#define CURL_DISABLE_DEPRECATION
#define CURL_DISABLE_TYPECHECK

#include "support/recording_curl.h"

#include <cstdarg>

#undef curl_easy_setopt

namespace {

recording_curl::Recording recording;
recording_curl::Answer answer;
curl_write_callback writeCallback = nullptr;
int handleObject;
curl_slist listObject{};

void Record(const std::string& call)
{
    recording.calls.push_back(call);
}

} // namespace

namespace recording_curl {

void AnswerWith(Answer newAnswer)
{
    recording = {};
    answer = std::move(newAnswer);
}

const Recording& Recorded()
{
    return recording;
}

} // namespace recording_curl

extern "C" {

CURLcode curl_global_init(long flags)
{
    Record("global_init " + std::to_string(flags));
    return CURLE_OK;
}

CURL* curl_easy_init()
{
    Record("easy_init");
    return answer.givesHandle ? &handleObject : nullptr;
}

CURLcode curl_easy_setopt(CURL*, CURLoption option, ...)
{
    std::va_list arguments;
    va_start(arguments, option);
    std::string value;
    if (option == CURLOPT_URL) {
        recording.url = va_arg(arguments, const char*);
    } else if (option == CURLOPT_POSTFIELDS) {
        recording.body = va_arg(arguments, const char*);
    } else if (option == CURLOPT_WRITEFUNCTION) {
        writeCallback = va_arg(arguments, curl_write_callback);
    } else {
        value = " " + std::to_string(va_arg(arguments, long));
    }
    va_end(arguments);
    Record("setopt " + std::to_string(option) + value);
    return CURLE_OK;
}

CURLcode curl_easy_perform(CURL*)
{
    Record("perform");
    recording.cursorDuringTransfer = GetCursor();
    for (std::string& piece : answer.pieces) {
        // Two-byte elements where they fit, to see the size multiplied.
        const std::size_t size = piece.size() % 2 ? 1 : 2;
        if (writeCallback(piece.data(), size, piece.size() / size, nullptr) != piece.size()) {
            return CURLE_WRITE_ERROR;
        }
    }
    return answer.result;
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
