// A host in C++.
#include <product_services/product_services.h>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <vector>

// No call reports this: the code stays so where there was nothing to report.
constexpr std::uint32_t NothingReported = 0xFFFFFFFF;

int main()
{
    std::vector<wchar_t> text(0x10000);

    HostContext context{};
    context.productName = L"Example Draft";
    context.productVersion = L"2026.1";
    context.apiKey = L"draft20-7k2m9q-x4v8p1w";
    context.languageId = 120;
    context.resultCode = NothingReported;
    context.resultText = text.data();

    try {
        CheckForUpdates(&context);
    } catch (const std::exception& error) {
        std::printf("error: %s\n", error.what());
        return 1;
    }
    if (context.resultCode == NothingReported) {
        std::printf("nothing was reported\n");
    } else {
        std::printf("%u: %ls\n", static_cast<unsigned>(context.resultCode), text.data());
    }
    return 0;
}
