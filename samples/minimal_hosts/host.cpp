// A host in C++20: both calls, guarded. Any compiler for 64-bit Windows will do, with
// ProductServicesGuard.dll in the folder of the program.
#include <product_services/product_services.hpp>

#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <thread>

namespace {

void Print(const wchar_t* name, const product_services::CallResult& result)
{
    using product_services::Outcome;
    const wchar_t* text = result.text.c_str();
    switch (result.outcome) {
    case Outcome::NewerRelease:
        // The URL is https and on a trusted host, so it may be opened.
        std::wprintf(L"%ls: a newer release is at %ls\n", name, text);
        break;
    case Outcome::UpToDate:
        std::wprintf(L"%ls: up to date\n", name);
        break;
    case Outcome::BrowserOpened:
        std::wprintf(L"%ls: the browser shows the purchase page\n", name);
        break;
    case Outcome::UserQuit:
        std::wprintf(L"%ls: left by the user\n", name);
        break;
    case Outcome::UntrustedCertificate:
    case Outcome::UntrustedAddress:
        std::wprintf(L"%ls: not secure, ask your administrator: %ls\n", name, text);
        break;
    case Outcome::Unreachable:
    case Outcome::TimedOut:
        std::wprintf(L"%ls: no connection, try again later: %ls\n", name, text);
        break;
    case Outcome::Cancelled:
        std::wprintf(L"%ls: cancelled\n", name);
        break;
    default:
        std::wprintf(
            L"%ls: failed with outcome %u: %ls\n", name, static_cast<unsigned>(result.outcome), text);
    }
}

} // namespace

int main()
{
    _setmode(_fileno(stdout), _O_U8TEXT); // for texts in any language
    const product_services::CallParams params{
        .productName = L"Example Draft",
        .productVersion = L"2026.1",
        .apiKey = L"draft20-7k2m9q-x4v8p1w",
        .languageId = PRODUCT_SERVICES_LANGUAGE_EN,
        .trustedHosts = L"localhost:18443",
        .usesSystemProxy = true,
        .timeLimit = std::chrono::seconds(15),
    };

    product_services::CallResult checked;
    std::jthread worker([&](const std::stop_token& stop) {
        auto quiet = params;
        quiet.isQuiet = true;
        quiet.stopToken = stop;
        checked = product_services::CheckForUpdates(quiet);
    });
    // The host's window is open here. When it is closed, worker.request_stop() ends a check that is still
    // running, as the end of worker's scope does.
    worker.join();
    Print(L"CheckForUpdates", checked);

    Print(L"Upgrade", product_services::Upgrade(params)); // on the thread that shows the host's windows
    return 0;
}
