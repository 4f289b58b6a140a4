// Stands in for libcurl at link time: records the calls and answers as told.
#pragma once

#include <curl/curl.h>
#include <string>
#include <vector>
#include <windows.h>

struct RecordingCurl
{
    // What it answers with.
    bool givesHandle = true;
    std::vector<std::string> pieces = {}; ///< What the write callback gets, one call a piece.
    CURLcode result = CURLE_OK;

    // What it saw.
    std::vector<std::string> calls = {};
    HCURSOR cursorDuringTransfer = nullptr;
    curl_write_callback write = nullptr;
};

/// The one that answers; assign to it to start anew.
extern RecordingCurl recordingCurl;
