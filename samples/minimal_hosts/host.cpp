// A host in C++17: both calls, guarded. Any compiler for 64-bit Windows will do.
#include <product_services/product_services.hpp>

#include <cstdio>

namespace {

void Print(const char* name, const product_services::CallResult& result)
{
    if (result.report) { // with 200 a trusted address to download from
        std::printf(
            "%s: %u: %ls\n", name, static_cast<unsigned>(result.report->code), result.report->text.c_str());
    } else if (result.untrustedAddress) {
        std::printf("%s: not to be opened: %ls\n", name, result.untrustedAddress->c_str());
    } else if (result.withheldMessage) {
        std::printf("%s: not shown, since the check is quiet: %ls\n", name, result.withheldMessage->c_str());
    } else if (result.error) {
        std::printf("%s: error: %ls\n", name, result.error->c_str());
    } else {
        std::printf("%s: nothing was reported\n", name);
    }
}

} // namespace

int main()
{
    const product_services::Product product{
        L"Example Draft", L"2026.1", L"draft20-7k2m9q-x4v8p1w", 120, L"localhost:18443"};

    Print("CheckForUpdates", product_services::CheckForUpdates(product));
    Print("Upgrade", product_services::Upgrade(product));
    return 0;
}
