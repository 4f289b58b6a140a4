// Stands in for libcurl at link time: records the calls and answers as told.
#pragma once

#include <curl/curl.h>
#include <string>
#include <vector>
#include <windows.h>

namespace recording_curl {

struct Recording
{
    std::vector<std::string> calls;
    std::string url;
    std::string body;
    HCURSOR cursorDuringTransfer = nullptr;
};

struct Answer
{
    CURLcode result = CURLE_OK;
    /// What the write callback gets, one call a piece.
    std::vector<std::string> pieces;
    bool givesHandle = true;
};

/// Forgets what was recorded and answers every transfer from now on with `answer`.
void AnswerWith(Answer answer);

const Recording& Recorded();

} // namespace recording_curl
