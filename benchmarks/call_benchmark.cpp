// call_benchmark DLL ADDRESS ROUNDS: update checks through the DLL, bare posts of the same body to ADDRESS,
// and such posts with the other calls that an update check must make.
#include "service/update_query.h"
#include "support/bench_product.h"
#include "support/measure.h"
#include "support/required_calls.h"

#include <cstdlib>
#include <curl/curl.h>
#include <string>

namespace {

std::string bareReply;

std::size_t KeepReply(const char* data, std::size_t size, std::size_t count, void*)
{
    bareReply.assign(data, size * count);
    return size * count;
}

bool BarePost(const char* address, const std::string& body)
{
    bareReply.clear();
    curl_global_init(CURL_GLOBAL_ALL);
    CURL* handle = curl_easy_init();
    curl_easy_setopt(handle, CURLOPT_URL, address);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, KeepReply);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
    const CURLcode result = curl_easy_perform(handle);
    curl_easy_cleanup(handle);
    return result == CURLE_OK && !bareReply.empty();
}

bool RequiredCalls(const BenchProduct& product, const char* address, const std::string& body)
{
    const bool hasRecord = required_calls::ReadRecord(product);
    required_calls::SetWaitCursor();
    const bool replied = BarePost(address, body);
    required_calls::SetWaitCursor();
    return hasRecord && replied && required_calls::ParseTwice(bareReply);
}

} // namespace

int main(int argc, char** argv)
{
    const HMODULE library = argc == 4 ? LoadLibraryA(argv[1]) : nullptr;
    if (!library) {
        return 2;
    }
    const auto check = reinterpret_cast<decltype(&CheckForUpdates)>(
        reinterpret_cast<void*>(GetProcAddress(library, "CheckForUpdates")));
    BenchProduct product;
    const std::string body = product_services::BuildUpdateQuery(
        BenchProduct::ApiKey, BenchProduct::Key, BenchProduct::Version, L"1");

    bool succeeds = true;
    const auto measure = [&](const char* series, const auto& work) {
        bool worked = false;
        Print(series, Duration([&] { worked = work(); }));
        succeeds = succeeds && worked;
    };
    const auto measureLibrary = [&] {
        measure("library", [&] {
            product.context.resultCode = 0;
            check(&product.context);
            return product.context.resultCode == PRODUCT_SERVICES_SUCCESS;
        });
    };
    const auto measureBare = [&] { measure("bare", [&] { return BarePost(argv[2], body); }); };
    const auto measureRequired = [&] {
        measure("required", [&] { return RequiredCalls(product, argv[2], body); });
    };
    // In turn, so that neither copy of libcurl, the DLL's and this program's, stays the warmer one.
    for (int rounds = std::atoi(argv[3]); rounds > 0; --rounds) {
        measureLibrary();
        measureBare();
        measureLibrary();
        measureRequired();
    }
    return succeeds ? 0 : 1;
}
