// A host application with all that one needs: its command line and its window make guarded calls.
#include "doctor/doctor.h"
#include "main_window.h"
#include "product_call.h"
#include "sample_product.h"
#include "unattended_user.h"
#include "user_language.h"

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <optional>
#include <string_view>

namespace {

constexpr wchar_t Usage[] =
    L"SampleHost         ...     opens the sample host's window\n"
    L"SampleHost check   ...     calls CheckForUpdates and prints the outcome\n"
    L"SampleHost upgrade ...     calls Upgrade and prints the outcome\n"
    L"SampleHost doctor  ...     looks for what keeps the calls from working, and changes nothing; the "
    L"status is 1\n"
    L"                           where something is wrong\n"
    L"\n"
    L"  --product NAME           the calling product (" SAMPLE_PRODUCT_NAME L")\n"
    L"  --version TEXT           its version (2026.1)\n"
    L"  --api-key KEY            its service API key (the product family's first)\n"
    L"  --language ID            the language, by an id that stands below (the language of Windows)\n"
    L"  --trusted-hosts LIST     the hosts that an address may lead to "
    L"(" SAMPLE_PRODUCT_TRUSTED_HOSTS L"), or any\n"
    L"  --quiet                  a check that shows no message\n"
    L"  --json                   what the doctor finds as JSON\n"
    L"  --unattended             press the buttons of what the library shows, and print what it says\n"
    L"  --buy N                  buy offer N when unattended (0: leave the upgrade center)\n"
    L"  --look MS                look at a window for so long before pressing when unattended (0)\n";

struct Options
{
    /// Null opens the window.
    ProductCall call = nullptr;
    bool isDoctor = false;
    doctor::Output output = doctor::Output::Lines;
    product_services::Product product;
    bool isUnattended = false;
    UnattendedUser user;
};

bool ReadNumber(const wchar_t* text, int& number)
{
    wchar_t* end = nullptr;
    number = std::wcstol(text, &end, 10);
    return end != text && *end == L'\0';
}

bool ReadOption(Options& options, std::wstring_view name, const wchar_t* value)
{
    if (name == L"--product") {
        options.product.name = value;
    } else if (name == L"--version") {
        options.product.version = value;
    } else if (name == L"--api-key") {
        options.product.apiKey = value;
    } else if (name == L"--trusted-hosts") {
        options.product.trustedHosts = value == std::wstring_view(L"any") ? L"" : value;
    } else if (name == L"--language") {
        return ReadNumber(value, options.product.languageId);
    } else if (name == L"--buy") {
        return ReadNumber(value, options.user.buys);
    } else if (name == L"--look") {
        return ReadNumber(value, options.user.looksMs);
    } else {
        return false;
    }
    return true;
}

// Nothing where an option is wrong, which `wrong` then names.
std::optional<Options> ReadOptions(int argc, wchar_t** argv, std::wstring& wrong)
{
    Options options;
    options.product.name = SAMPLE_PRODUCT_NAME;
    options.product.version = L"2026.1";
    options.product.apiKey = SAMPLE_PRODUCT_API_KEY;
    options.product.languageId = UserLanguageId();
    options.product.trustedHosts = SAMPLE_PRODUCT_TRUSTED_HOSTS;
    for (int i = 1; i < argc; ++i) {
        const std::wstring_view name = argv[i];
        if (i == 1 && name == L"check") {
            options.call = product_services::CheckForUpdates;
        } else if (i == 1 && name == L"upgrade") {
            options.call = product_services::Upgrade;
        } else if (i == 1 && name == L"doctor") {
            options.isDoctor = true;
        } else if (name == L"--json" && options.isDoctor) {
            options.output = doctor::Output::Json;
        } else if (name == L"--quiet") {
            options.product.options |= PRODUCT_SERVICES_QUIET;
        } else if (name == L"--unattended") {
            options.isUnattended = true;
        } else if (++i == argc || !ReadOption(options, name, argv[i])) {
            wrong = name;
            return std::nullopt;
        }
    }
    return options;
}

void RunCommand(Options& options)
{
    std::wstring outcome;
    const auto call = [&] { outcome = Describe(options.call(options.product)); };
    if (options.isUnattended) {
        WithUnattendedUser(options.user, call);
    } else {
        call();
    }
    PrintLine(L"outcome: " + outcome);
}

void PrintUsage(const std::wstring& wrong)
{
    std::fputws((Usage + (L"\n  " + LanguageIds()) + L"\n").c_str(), stderr);
    if (wrong != L"--help") {
        std::fputws((L"\nunknown, without a value, or not a number: " + wrong + L"\n").c_str(), stderr);
    }
}

[[noreturn]] void RunDoctor(const Options& options)
{
    const bool isWell = doctor::Examine(
        {options.product, SAMPLE_PRODUCT_SERVICE_ADDRESS, SAMPLE_PRODUCT_RECORD_PATH}, options.output);
    std::fflush(stdout);
    std::_Exit(isWell ? 0 : 1);
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    std::wstring wrong;
    auto options = ReadOptions(argc, argv, wrong);
    if (!options) {
        PrintUsage(wrong);
        return wrong == L"--help" ? 0 : 2;
    }
    if (options->isDoctor) {
        RunDoctor(*options);
    }
    if (options->call) {
        RunCommand(*options);
    } else {
        RunMainWindow(options->product);
    }
    return 0;
}
