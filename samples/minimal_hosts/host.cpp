// A host in C++17: both calls, guarded. Any compiler for 64-bit Windows will do.
#include <product_services/product_services.hpp>

#include <cstdio>

namespace {

void Print(const char* name, const product_services::CallResult& result)
{
    if (result.report) {
        std::printf(
            "%s: %u: %ls\n", name, static_cast<unsigned>(result.report->code), result.report->text.c_str());
    } else if (result.error) {
        std::printf("%s: error: %ls\n", name, result.error->c_str());
    } else {
        std::printf("%s: nothing was reported\n", name);
    }
}

} // namespace

int main()
{
    const product_services::Product product{L"Example Draft", L"2026.1", L"draft20-7k2m9q-x4v8p1w", 120};

    Print("CheckForUpdates", product_services::CheckForUpdates(product));
    Print("Upgrade", product_services::Upgrade(product));
    return 0;
}
