// Replaces libcurl's transfers in a DLL of the library: an update query is answered at once with reply.json
// in the working directory, and the connectivity probe with "1".
#include "benchmark_common.h"
#include "support/curl_stub.h"

static std::string offers = ReadReply();
static std::string probeAnswer = "1";

// The time at which the write function of the last answer returned.
extern "C" __declspec(dllexport) double lastArrival;
double lastArrival = 0;

CURLcode PerformTransfer(const CurlTransfer& transfer)
{
    curlCalls.clear();
    std::string& answer = transfer.url.ends_with("/check.php") ? probeAnswer : offers;
    transfer.write(answer.data(), 1, answer.size(), nullptr);
    lastArrival = Now();
    return CURLE_OK;
}
