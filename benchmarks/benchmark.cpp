// benchmark DLL URL ROUNDS SERIES...: loads the DLL into a host with open windows and measures the series
// alternately, so that a busy moment of the machine affects all of them. Bare posts go to URL. Prints lines
// "SERIES: NUMBER", in microseconds, except for the working set, which is in bytes.
#include "benchmark_common.h"
#include "paint_timing.h"
#include "product_family.h"
#include "product_services/guarded_calls.h"
#include "product_services/product_services.h"

#include <commctrl.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <curl/curl.h>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <psapi.h>
#include <shellapi.h>

namespace {

const std::wstring RecordPath = std::wstring(product_family::RecordRegistryPath) + L"\\Example Draft\\2026.1";
const std::string UpdateQuery =
    "api_key=known-1&key=2026.1&hardware_id=" + std::string(64, '0') + "&version=2026.1&up=1";

wchar_t resultText[1024];
HostContext context{L"Example Draft", L"2026.1", L"known-1", 140, nullptr, 0,
                    resultText,       nullptr,   nullptr,    0};
HMODULE library = nullptr;
const char* address = nullptr;
std::string reply = ReadReply();
double loadDuration = 0;
double addedMemory = 0;

void Require(bool condition)
{
    if (!condition) {
        std::exit(1);
    }
}

template <typename Work>
double Duration(const Work& work)
{
    const double start = Now();
    work();
    return Now() - start;
}

template <typename Export>
Export* Find(HMODULE dll, const char* name)
{
    const FARPROC found = GetProcAddress(dll, name);
    Require(found);
    return reinterpret_cast<Export*>(reinterpret_cast<void*>(found));
}

void Call(void function(HostContext*), std::uint32_t expected)
{
    context.resultCode = 0;
    function(&context);
    Require(context.resultCode == expected);
}

void Check()
{
    static const auto check = Find<void(HostContext*)>(library, "CheckForUpdates");
    Call(check, PRODUCT_SERVICES_SUCCESS);
}

// Calls the guard of the same product family as the DLL.
void GuardedCheck(std::uint32_t options)
{
    static const bool isHttps = std::strncmp(address, "https:", 6) == 0;
    static const auto check = Find<ProductServicesOutcome(GuardedCallParams*)>(
        LoadLibraryW(isHttps ? L"BenchGuardHttps.dll" : L"BenchGuardHttp.dll"), "GuardedCheckForUpdates");
    GuardedCallParams params{};
    params.size = sizeof params;
    params.productName = context.productName;
    params.productVersion = context.productVersion;
    params.apiKey = context.apiKey;
    params.languageId = context.languageId;
    params.trustedHosts = L"example.com;*.example.com;shop.example";
    params.options = options;
    params.resultText = resultText;
    params.resultTextCapacity = 1024;
    Require(check(&params) == PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE);
}

std::size_t KeepReply(char* data, std::size_t size, std::size_t count, void*)
{
    reply.assign(data, size * count);
    return size * count;
}

void BarePost()
{
    using Post = CURLcode(const char* address, const char* body, curl_write_callback write);
    static const auto post = Find<Post>(LoadLibraryW(L"CurlBaseline.dll"), "Post");
    Require(post(address, UpdateQuery.c_str(), KeepReply) == CURLE_OK);
}

// Makes the calls that a check cannot avoid besides its post.
void RequiredCalls()
{
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_CURRENT_USER, RecordPath.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &key);
    for (const wchar_t* name : {L"key", L"version"}) {
        wchar_t text[256];
        DWORD size = sizeof text;
        Require(RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS);
    }
    RegCloseKey(key);
    for (int i = 0; i < 2; ++i) {
        SetCursor(LoadCursorW(nullptr, IDC_WAIT));
        Require(nlohmann::json::parse(reply).is_array());
    }
}

double PaintUpgradeCenter()
{
    static const auto upgrade = Find<void(HostContext*)>(library, "Upgrade");
    static const auto lastArrival = Find<double>(library, "lastArrival");
    Call(upgrade, PRODUCT_SERVICES_USER_QUIT);
    return LastPainted() - *lastArrival;
}

double PaintBareDialog()
{
    const std::size_t offers = nlohmann::json::parse(reply).size();
    const double start = Now();
    ShowBareDialog(library, offers);
    return LastPainted() - start;
}

const std::map<std::string, std::function<double()>> Series{
    {"check", [] { return Duration(Check); }},
    {"guarded check", [] { return Duration([] { GuardedCheck(PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE); }); }},
    {"verifying check", [] { return Duration([] { GuardedCheck(0); }); }},
    {"bare post", [] { return Duration(BarePost); }},
    {"required calls", [] { return Duration(RequiredCalls); }},
    {"post and required calls", [] { return Duration(BarePost) + Duration(RequiredCalls); }},
    {"upgrade center", PaintUpgradeCenter},
    {"bare dialog", PaintBareDialog},
    {"load", [] { return loadDuration; }},
    {"working set", [] { return addedMemory; }},
};

HWND OpenWindows()
{
    InitCommonControls();
    const HWND window = CreateWindowW(
        L"#32770", L"Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 400, 300, nullptr, nullptr, nullptr,
        nullptr);
    const HWND list = CreateWindowW(
        WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE, 0, 0, 300, 200, window, nullptr, nullptr, nullptr);
    DragAcceptFiles(window, TRUE);
    UpdateWindow(window);
    return list;
}

void InstallProduct()
{
    for (const wchar_t* name : {L"key", L"version"}) {
        RegSetKeyValueW(HKEY_CURRENT_USER, RecordPath.c_str(), name, REG_SZ, L"2026.1", sizeof L"2026.1");
    }
}

double WorkingSet()
{
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<double>(counters.WorkingSetSize);
}

void Load(const char* dll)
{
    const double before = WorkingSet();
    loadDuration = Duration([&] { library = LoadLibraryA(dll); });
    addedMemory = WorkingSet() - before;
    Require(library);
}

// Handles all messages that a measurement has left: the host's windows are repainted after a dialog.
void Settle()
{
    constexpr DWORD QuietMs = 30;
    while (MsgWaitForMultipleObjects(0, nullptr, FALSE, QuietMs, QS_ALLINPUT) == WAIT_OBJECT_0) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
    }
}

} // namespace

int main(int, char** argv)
{
    WatchLists(OpenWindows());
    InstallProduct();
    Load(argv[1]);
    address = argv[2];
    for (int rounds = std::atoi(argv[3]); rounds > 0; --rounds) {
        for (char** series = argv + 4; *series; ++series) {
            Settle();
            std::printf("%s: %.1f\n", *series, Series.at(*series)());
        }
    }
}
