#include "options.h"

const wchar_t Usage[] =
    L"SampleHost         ...     opens the sample host's window\n"
    L"SampleHost check   ...     calls CheckForUpdates and prints the outcome\n"
    L"SampleHost upgrade ...     calls Upgrade and prints the outcome\n"
    L"\n"
    L"  --product NAME           the calling product (Example Draft)\n"
    L"  --version TEXT           its version (2026.1)\n"
    L"  --api-key KEY            its service API key (Example Draft's)\n"
    L"  --language ID            120 EN, 130 CZ, 140 DE, 150 ES, 160 FR, 170 IT, 180 JA, 190 PL, 200 RU,\n"
    L"                           220 TW, 230 ZH (the language of Windows)\n"
    L"  --unattended             press the buttons of what the library shows, and print what it says\n"
    L"  --buy N                  buy offer N when unattended (0: leave the upgrade center)\n"
    L"  --look MS                look at a window for so long before pressing when unattended (0)\n";

namespace {

bool ReadNumber(const std::wstring& text, int& number)
{
    try {
        std::size_t end = 0;
        number = std::stoi(text, &end);
        return end == text.size();
    } catch (const std::exception&) {
        return false;
    }
}

bool ReadValue(Options& options, const std::wstring& name, const std::wstring& value)
{
    if (name == L"--product") {
        options.productName = value;
    } else if (name == L"--version") {
        options.productVersion = value;
    } else if (name == L"--api-key") {
        options.apiKey = value;
    } else if (name == L"--language") {
        return ReadNumber(value, options.languageId);
    } else if (name == L"--buy") {
        return ReadNumber(value, options.buys);
    } else if (name == L"--look") {
        return ReadNumber(value, options.looksMs);
    } else {
        return false;
    }
    return true;
}

} // namespace

std::optional<Options> ReadOptions(const std::vector<std::wstring>& arguments)
{
    Options options;
    std::size_t i = 0;
    if (i < arguments.size() && (arguments[i] == L"check" || arguments[i] == L"upgrade")) {
        options.command = arguments[i++];
    }
    while (i < arguments.size()) {
        const std::wstring& name = arguments[i++];
        if (name == L"--unattended") {
            options.isUnattended = true;
        } else if (i == arguments.size() || !ReadValue(options, name, arguments[i++])) {
            return std::nullopt;
        }
    }
    return options;
}
