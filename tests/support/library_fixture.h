// The DLL through its exports, with a product record, a service, and a second thread as the user.
#pragma once

#include "support/loopback_server.h"

#include "product_services/product_services.h"
#include "support/import_hook.h"
#include "support/product_records.h"
#include "support/test_folder.h"

#include <automation.h>

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <regex>

/// What a call leaves behind: "CODE TEXT" or nothing, and after a comma the exception that left it.
using Outcome = std::wstring;

inline const Outcome Nothing = L"nothing";
inline const Outcome Quit = L"540 User chose to quit!";
inline const Outcome NoRecord = L"950 No data of the installed product was found.";

inline const Outcome BadConversion = L"nothing, bad conversion";
inline const Outcome NoJson = L"nothing, [json.exception.parse_error.101]";
inline const Outcome MustBe = L"nothing, [json.exception.type_error.302] type must be ";

/// The pauses of 150 ms that the library made instead of sleeping, and what happens in each.
inline int pauses;
inline std::function<void()> atPause;

// Of another length are those of the runtime, which Visual Studio's imports beside ours.
inline void CountPause(DWORD milliseconds)
{
    if (milliseconds != 150) {
        SleepEx(milliseconds, FALSE);
        return;
    }
    ++pauses;
    if (atPause) {
        atPause();
    }
}

class LibraryTest : public testing::Test
{
protected:
    using User = std::function<void(HWND dialog)>;

    LibraryTest()
    {
        records.Write(L"Product\\1.0", L"key", L"product-key");
        records.Write(L"Product\\1.0", L"version", L"20.1");
    }
    void SetUp() override { Load(); }

    /// Loads the library, which knows of no call yet.
    virtual void Load()
    {
        library = LoadLibraryW(L"ProductServicesForTests.dll");
        pauses = 0;
        atPause = {};
        ReplaceImport(library, "Sleep", CountPause);
    }

    void Reload()
    {
        FreeLibrary(library);
        ASSERT_EQ(GetModuleHandleW(L"ProductServicesForTests.dll"), nullptr);
        Load();
    }

    void TearDown() override
    {
        FreeLibrary(library);
        // Under WINEDEBUG=warn+heap: no block was written to past its end or after it was freed.
        EXPECT_TRUE(HeapValidate(GetProcessHeap(), 0, nullptr));
    }

    decltype(&Upgrade) Export(const char* name) const
    {
        return reinterpret_cast<decltype(&Upgrade)>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    }

    Outcome Check() { return Call("CheckForUpdates"); }

    /// Calls the export on this thread while another gives the dialog that comes up to `user`.
    Outcome ShowUpgrades(const User& user = {})
    {
        automation::VisibleDialogs(GetCurrentThreadId()); // makes ready what both threads would make at once
        std::atomic<bool> isDone = false;
        std::thread watcher([&, thread = GetCurrentThreadId()] { Watch(thread, user, isDone); });
        Outcome outcome = Call("Upgrade");
        isDone = true;
        watcher.join();
        return outcome;
    }

    /// Whether this pattern is in the requests since the last call of this.
    bool IsAsked(const char* pattern)
    {
        return std::regex_search(service.TakeRequests(), std::regex(pattern));
    }

    /// Makes the language of `host` one whose text of each id is "text <id>".
    void InstallLanguage()
    {
        std::filesystem::create_directories("lang/PL");
        std::wstring lines;
        for (int id = 0; id < 88; ++id) {
            lines += L"text " + std::to_wstring(id) + L"\n";
        }
        WriteFile("lang/PL/Vemo_PL.lang", lines);
        host.languageId = PRODUCT_SERVICES_LANGUAGE_PL;
    }

    TestFolder folder;
    ProductRecords records;
    LoopbackServer service;
    HMODULE library = nullptr;
    bool wantsText = true;
    HostContext host{L"Product", L"1.0", L"api-key", 120, nullptr, 0, nullptr, nullptr, nullptr, 0};

private:
    Outcome Call(const char* name)
    {
        constexpr std::uint32_t Untouched = 0xFFFFFFFF;
        HostContext context = host; // each call has a record of its own
        std::wstring text(64 * 1024, L'#');
        context.resultCode = Untouched;
        context.resultText = wantsText ? text.data() : nullptr;
        std::string exception;
        try {
            Export(name)(&context);
        } catch (const std::exception& error) {
            // Where in the text the JSON library gave up is its own affair.
            exception = std::string(", ") + error.what();
            exception.resize(std::min(exception.find(" parse error at"), exception.size()));
        }
        Outcome outcome = Nothing;
        if (context.resultCode != Untouched) {
            outcome = std::to_wstring(context.resultCode) + L" " + text.c_str();
        } else {
            EXPECT_EQ(text.front(), L'#') << "a text without a code";
        }
        return outcome + Outcome(exception.begin(), exception.end());
    }

    // A dialog that nobody expects, or that stays open, is a failure and ends in seconds.
    static void Watch(DWORD thread, const User& user, const std::atomic<bool>& isDone)
    {
        int dialogs = 0;
        for (; !isDone; Sleep(1)) {
            for (HWND dialog : automation::VisibleDialogs(thread)) {
                const bool isExpected = ++dialogs == 1 && user;
                if (isExpected) {
                    user(dialog);
                }
                if (!automation::WaitFor([&] { return !IsWindow(dialog); }, isExpected ? 5000 : 0)) {
                    ADD_FAILURE() << "a dialog that is not expected or stays open";
                    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
                    PostThreadMessageW(thread, WM_QUIT, 0, 0);
                }
            }
        }
        EXPECT_EQ(dialogs, user ? 1 : 0);
    }
};
