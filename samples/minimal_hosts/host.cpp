// A host in C++.
#include <product_services/product_services.h>

#include <cstdio>
#include <exception>
#include <vector>

int main()
{
    std::vector<wchar_t> text(0x10000);

    HostContext context{};
    context.productName = L"Example Draft";
    context.productVersion = L"2026.1";
    context.apiKey = L"draft20-7k2m9q-x4v8p1w";
    context.languageId = 120;
    context.resultText = text.data();

    try {
        CheckForUpdates(&context);
    } catch (const std::exception& error) {
        std::printf("error: %s\n", error.what());
        return 1;
    }
    std::printf("%u: %ls\n", static_cast<unsigned>(context.resultCode), text.data());
    return 0;
}
