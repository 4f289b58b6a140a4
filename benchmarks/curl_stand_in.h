// A stand-in for libcurl at link time: who links it says what a transfer does.
#pragma once

// The library calls curl_formfree on purpose, though libcurl has deprecated it.
#define CURL_DISABLE_DEPRECATION

#include <curl/curl.h>
#include <string>
#include <vector>

/// What the options of a handle say.
struct CurlTransfer
{
    std::string url;
    const char* body = nullptr; ///< The caller's own, as libcurl reads it.
    curl_write_callback write = nullptr;
};

/// What curl_easy_perform does; defined by who links the stand-in.
CURLcode PerformTransfer(const CurlTransfer& transfer);

/// The calls in their order, options by their numbers. They are the user's to clear.
extern std::vector<std::string> curlCalls;

/// Whether curl_easy_init succeeds.
extern bool curlGivesHandle;
