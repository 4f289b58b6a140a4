// Feeds any bytes to what reads replies and language files, natively under libFuzzer; scripts/fuzz.sh builds
// and runs it.
#include "service/service_reply.h"
#include "service/text_conversion.h"
#include "text/utf16.h"

#include <cstdlib>

using namespace product_services;

// The library's own conversion calls Windows.
std::wstring product_services::ToWide(const std::string& utf8)
{
    return {utf8.begin(), utf8.end()};
}

static void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

static void ReadReply(const std::string& text)
{
    try {
        if (!ReadStatus(ParseServiceReply(text))) {
            ServiceReply reply = ParseServiceReply(text);
            for (std::size_t i = 0, count = reply.size(); i < count; ++i) {
                ReadOffer(reply, i);
            }
        }
    } catch (const ServiceReply::exception& error) {
        Require(error.id == 101 || error.id == 302 || error.id == 305 || error.id == 406);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    ReadReply(bytes);
    Require(DecodeUtf16(bytes).size() <= size / 2);
    return 0;
}
