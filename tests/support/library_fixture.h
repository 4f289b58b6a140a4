// The DLL through its exports, with a product record, a service, and a second thread as the user.
#pragma once

#include "support/loopback_server.h"

#include "product_services/product_services.h"
#include "support/product_records.h"

#include <automation.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <set>

inline constexpr std::uint32_t NothingReported = 0xFFFFFFFF;

/// What a call left behind.
struct Outcome
{
    std::uint32_t code = NothingReported;
    std::wstring text = L"untouched";
    std::string exception = {};

    bool operator==(const Outcome&) const = default;
};

inline void PrintTo(const Outcome& outcome, std::ostream* stream)
{
    *stream << outcome.code << " " << testing::PrintToString(outcome.text) << " " << outcome.exception;
}

inline const Outcome Untouched{};

class LibraryTest : public testing::Test
{
protected:
    using User = std::function<void(HWND dialog)>;

    LibraryTest()
    {
        records.Write(L"Product\\1.0", L"key", L"product-key");
        records.Write(L"Product\\1.0", L"version", L"20.1");
    }
    ~LibraryTest() override { FreeLibrary(library); }

    // Under WINEDEBUG=warn+heap: no block was written to past its end or after it was freed.
    void TearDown() override { EXPECT_TRUE(HeapValidate(GetProcessHeap(), 0, nullptr)); }

    Outcome Check(const User& user = {}) { return Call("CheckForUpdates", user); }
    Outcome ShowUpgrades(const User& user = {}) { return Call("Upgrade", user); }

    /// Calls an export on this thread while another gives the dialog that comes up to `user`.
    Outcome Call(const char* name, const User& user)
    {
        HostContext context = host; // each call has a record of its own
        std::vector<wchar_t> text(64 * 1024, L'#');
        std::wcscpy(text.data(), L"untouched");
        context.resultCode = NothingReported;
        context.resultText = wantsText ? text.data() : nullptr;

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
            .write(
                reinterpret_cast<const char*>(lines.data()), static_cast<std::streamsize>(lines.size() * 2));
        host.languageId = PRODUCT_SERVICES_LANGUAGE_PL;
    }

    ProductRecords records;
    LoopbackServer service;
    HMODULE library = LoadLibraryW(L"ProductServicesForTests.dll");
    bool wantsText = true;
    HostContext host{L"Product", L"1.0", L"api-key", 120, nullptr, 0, nullptr, nullptr, nullptr, 0};

private:
    // A dialog that nobody expects, or that stays open, is a failure and ends in seconds.
    static void Watch(DWORD thread, const User& user, const std::atomic<bool>& isDone)
    {
        std::set<HWND> seen;
        for (; !isDone; Sleep(1)) {
            for (HWND dialog : automation::VisibleDialogs(thread)) {
                if (seen.insert(dialog).second && user && seen.size() == 1) {
                    user(dialog);
                }
                const DWORD patience = user && seen.size() == 1 ? 5000 : 0;
                if (!automation::WaitFor([&] { return !IsWindow(dialog) || isDone; }, patience)) {
                    ADD_FAILURE() << "a dialog that is not expected or stays open";
                    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
                    PostThreadMessageW(thread, WM_QUIT, 0, 0);
                }
            }
        }
        EXPECT_EQ(seen.size(), user ? 1u : 0u) << "dialogs";
    }
};
