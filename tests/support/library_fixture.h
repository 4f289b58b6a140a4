// The DLL through its exports, with a product record, a service, and a second thread as the user.
#pragma once

#include "support/loopback_server.h"

#include "product_services/product_services.h"
#include "support/import_hook.h"
#include "support/product_records.h"

#include <automation.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <thread>

inline constexpr std::uint32_t NothingReported = 0xFFFFFFFF;

/// What a call left behind.
struct Outcome
{
    std::uint32_t code = NothingReported;
    std::wstring text = L"untouched";
    std::string exception;

    bool operator==(const Outcome&) const = default;
};

inline void PrintTo(const Outcome& outcome, std::ostream* stream)
{
    *stream << outcome.code << " \"" << std::string(outcome.text.begin(), outcome.text.end()) << "\" "
            << outcome.exception;
}

inline const Outcome Untouched{};

class LibraryTest : public testing::Test
{
protected:
    using User = std::function<void(HWND dialog)>;

    LibraryTest() { records.Write(L"Product", L"1.0", L"product-key", L"20.1"); }

    ~LibraryTest() override { FreeLibrary(library); }

    /// No heap of the process has a block that was written to past its end or after it was freed: under Wine
    /// with WINEDEBUG=warn+heap.
    void TearDown() override
    {
        HANDLE heaps[64];
        const DWORD count = GetProcessHeaps(64, heaps);
        EXPECT_TRUE(std::all_of(heaps, heaps + count, [](HANDLE heap) { return HeapValidate(heap, 0, nullptr); }));
    }

    Outcome Check(const User& user = {}) { return Call("CheckForUpdates", user); }
    Outcome ShowUpgrades(const User& user = {}) { return Call("Upgrade", user); }

    /// Calls an export on this thread while another watches its windows: gives the dialog that is expected to
    /// `user` and closes every other, as a failure.
    Outcome Call(const char* name, const User& user)
    {
        // A record and a buffer of this call alone, as another command of the host would have them.
        HostContext context = host;
        std::vector<wchar_t> text(64 * 1024, L'#');
        std::wcscpy(text.data(), L"untouched");
        context.resultCode = NothingReported;
        context.resultText = host.resultText ? text.data() : nullptr;

        Outcome outcome;
        std::atomic<bool> isDone = false;
        std::thread watcher([&, thread = GetCurrentThreadId()] { Watch(thread, user, isDone); });
        try {
            reinterpret_cast<decltype(&CheckForUpdates)>(
                reinterpret_cast<void*>(GetProcAddress(library, name)))(&context);
        } catch (const std::exception& error) {
            outcome.exception = error.what();
        }
        isDone = true;
        watcher.join();
        outcome.code = context.resultCode;
        outcome.text = text.data();
        return outcome;
    }

    /// Makes the language of `host` one whose text of each id is "text <id>".
    void InstallLanguage()
    {
        CreateDirectoryW(L"lang", nullptr);
        CreateDirectoryW(L"lang\\PL", nullptr);
        std::wstring lines;
        for (int id = 0; id < 88; ++id) {
            lines += L"text " + std::to_wstring(id) + L"\n";
        }
        std::ofstream("lang\\PL\\Vemo_PL.lang", std::ios::binary)
            .write(reinterpret_cast<const char*>(lines.data()), static_cast<std::streamsize>(lines.size() * 2));
        host.languageId = PRODUCT_SERVICES_LANGUAGE_PL;
    }

    ProductRecords records;
    LoopbackServer service;
    HMODULE library = LoadLibraryW(L"ProductServicesForTests.dll");
    wchar_t anyText = 0;
    HostContext host{L"Product", L"1.0",    L"api-key", PRODUCT_SERVICES_LANGUAGE_EN, nullptr, 0,
                     &anyText,   nullptr, nullptr,    0};

private:
    static void Watch(DWORD thread, const User& user, const std::atomic<bool>& isDone)
    {
        std::set<HWND> seen;
        for (; !isDone; Sleep(5)) {
            for (HWND dialog : automation::VisibleDialogs(thread)) {
                if (!seen.insert(dialog).second) {
                    continue;
                }
                if (user && seen.size() == 1) {
                    user(dialog);
                } else {
                    ADD_FAILURE() << "an unexpected dialog";
                }
                if (!user || !automation::WaitFor([&] { return !IsWindow(dialog) || isDone; }, 5000)) {
                    ADD_FAILURE() << "a dialog that stays open";
                    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
                    PostThreadMessageW(thread, WM_QUIT, 0, 0);
                }
            }
        }
        EXPECT_EQ(seen.size(), user ? 1u : 0u) << "dialogs";
    }
};
