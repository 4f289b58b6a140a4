// A DLL that contains only libcurl and one post, with the same imports as the library.
#include <curl/curl.h>
#include <windows.h>

#include <shellapi.h>
#include <shlwapi.h>

extern "C" __declspec(dllexport) CURLcode
    Post(const char* address, const char* body, curl_write_callback write)
{
    curl_global_init(CURL_GLOBAL_ALL);
    CURL* handle = curl_easy_init();
    curl_easy_setopt(handle, CURLOPT_URL, address);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, write);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
    const CURLcode result = curl_easy_perform(handle);
    curl_easy_cleanup(handle);
    return result;
}

// One function of each DLL that the library imports but libcurl does not.
extern "C" __declspec(dllexport) void* const Imports[]{
    reinterpret_cast<void*>(BitBlt), reinterpret_cast<void*>(ShellExecuteW), reinterpret_cast<void*>(StrCpyW),
    reinterpret_cast<void*>(MessageBoxW)};
