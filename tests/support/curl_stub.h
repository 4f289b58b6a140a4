// A stub that is linked instead of libcurl. The program that links it defines what a transfer does.
#pragma once

// The library calls curl_formfree deliberately, although libcurl has deprecated it.
#define CURL_DISABLE_DEPRECATION

#include <curl/curl.h>
#include <string>
#include <vector>

/// The options that were set for a handle.
struct CurlTransfer
{
    std::string url;
    const char* body = nullptr; ///< The caller's buffer, which libcurl does not copy either.
    curl_write_callback write = nullptr;
};

/// Called by curl_easy_perform. The program that links the stub defines it.
CURLcode PerformTransfer(const CurlTransfer& transfer);

/// The recorded calls in order, with options by number. The test clears them.
extern std::vector<std::string> curlCalls;

/// The result of curl_easy_init.
extern bool curlInitSucceeds;
