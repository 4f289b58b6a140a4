// The DLL through its exports, with a product record, a service, and a second thread as the user.
#pragma once

#include "support/loopback_server.h"

#include "product_services/product_services.h"
#include "support/product_records.h"
#include "support/test_folder.h"
#include "ui/resource.h"

#include <import_hook.h>
#include <window_automation.h>

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <list>
#include <regex>

/// What a call leaves behind: "CODE TEXT" or nothing, and after commas the exception that left it and the
/// message boxes that it showed.
using Outcome = std::wstring;

inline const Outcome Nothing = L"nothing";
inline const Outcome Quit = L"540 User chose to quit!";
inline const Outcome NoRecord = L"950 No data of the installed product was found.";
inline const Outcome NoJson = L"nothing, [json.exception.parse_error.101]";

class LibraryTest : public testing::Test
{
protected:
    using User = std::function<void(HWND dialog)>;

    static constexpr std::uint32_t Untouched = 0xFFFFFFFF;

    LibraryTest()
    {
        records.Write(L"Product\\1.0", L"key", L"product-key");
        records.Write(L"Product\\1.0", L"version", L"20.1");
        Load();
    }

    ~LibraryTest() override
    {
        Unload();
        // Under WINEDEBUG=warn+heap: no block was written to past its end or after it was freed.
        EXPECT_TRUE(HeapValidate(GetProcessHeap(), 0, nullptr));
        RemoveVectoredExceptionHandler(m_handler);
        EXPECT_EQ(faults.exchange(0), 0) << "which the system passes over in a window's procedure";
    }

    /// Loads the library anew, which knows of no call yet.
    void Reload()
    {
        Unload();
        ASSERT_EQ(GetModuleHandleW(L"ProductServicesForTests.dll"), nullptr);
        Load();
    }

    /// Until the library is unloaded, it calls `replacement` instead.
    template <typename Function>
    void ReplaceImport(const char* name, Function* replacement)
    {
        EXPECT_TRUE(hooks.emplace_back().Install(library, name, reinterpret_cast<void*>(replacement)))
            << name;
    }

    Outcome Check() { return Call("CheckForUpdates"); }

    /// Shows the upgrade center on this thread while another gives the dialog that comes up to `user`.
    Outcome ShowUpgrades(const User& user = {})
    {
        // Makes ready what both threads would make at once.
        window_automation::VisibleDialogs(GetCurrentThreadId());
        std::atomic<bool> isDone = false;
        std::thread watcher([&, thread = GetCurrentThreadId()] { Watch(thread, user, isDone); });
        Outcome outcome = Call("Upgrade");
        isDone = true;
        watcher.join();
        return outcome;
    }

    /// Shows the upgrade center to somebody who looks at it and leaves with Exit.
    Outcome Look(const User& look = [](HWND) {})
    {
        return ShowUpgrades([&](HWND center) {
            look(center);
            window_automation::ClickButton(center, IDCANCEL);
        });
    }

    static HWND List(HWND center) { return GetDlgItem(center, IDC_UPGRADE_OFFERS); }

    decltype(&Upgrade) Export(const char* name) const
    {
        return reinterpret_cast<decltype(&Upgrade)>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    }

    /// Whether this pattern is in the requests since the last call of this.
    bool IsAsked(const std::string& pattern)
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
    HostContext host{L"Product", L"1.0", L"api-key", 120, nullptr, 0, nullptr, nullptr, nullptr, 0};
    HostContext called{}; // the host's record of the last call, which is one of its own
    bool wantsText = true;

    /// What the loaded library did instead of sleeping, showing a box and opening a file.
    static inline int pauses;
    static inline std::function<void()> atPause;
    static inline std::wstring boxes;
    static inline std::vector<std::wstring> opened;

private:
    static LONG CALLBACK CountFault(EXCEPTION_POINTERS* exception)
    {
        faults += exception->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION;
        return EXCEPTION_CONTINUE_SEARCH;
    }

    void Load()
    {
        pauses = 0;
        atPause = [] {};
        opened.clear();
        library = LoadLibraryW(L"ProductServicesForTests.dll");
        ReplaceImport("Sleep", NotePause);
        ReplaceImport("MessageBoxW", NoteBox);
        ReplaceImport("ShellExecuteW", NoteOpened);
    }

    void Unload()
    {
        hooks.clear();
        FreeLibrary(library);
    }

    // Of another length are those of the runtime, which Visual Studio's imports beside ours.
    static void NotePause(DWORD milliseconds)
    {
        if (milliseconds != 150) {
            SleepEx(milliseconds, FALSE);
            return;
        }
        ++pauses;
        atPause();
    }

    static int NoteBox(HWND owner, const wchar_t* text, const wchar_t* caption, UINT flags)
    {
        EXPECT_EQ(owner, nullptr);
        EXPECT_EQ(flags, static_cast<UINT>(MB_OK | MB_ICONERROR)) << "the good news, too";
        boxes += std::wstring(L", box ") + caption + L": " + text;
        return IDOK;
    }

    static HINSTANCE NoteOpened(
        HWND, const wchar_t* verb, const wchar_t* file, const wchar_t* parameters, const wchar_t* directory,
        int show)
    {
        EXPECT_EQ(verb, nullptr) << "the default action";
        EXPECT_EQ(parameters, nullptr);
        EXPECT_EQ(directory, nullptr);
        EXPECT_EQ(show, SW_SHOWNORMAL);
        opened.emplace_back(file);
        return nullptr; // a failure, which nobody looks at
    }

    Outcome Call(const char* name)
    {
        std::wstring text(64 * 1024, L'#');
        called = host;
        called.resultCode = Untouched;
        called.resultText = wantsText ? text.data() : nullptr;
        boxes.clear();
        std::string exception;
        try {
            Export(name)(&called);
        } catch (const std::exception& error) {
            // Where in the text the JSON library gave up is its own affair.
            exception = std::string(", ") + error.what();
            exception.resize(std::min(exception.find(" parse error at"), exception.size()));
        }
        Outcome outcome = Nothing;
        if (called.resultCode != Untouched) {
            outcome = std::to_wstring(called.resultCode) + L" " + text.substr(0, text.find(L'\0'));
        } else {
            EXPECT_EQ(text.front(), L'#') << "a text without a code";
        }
        return outcome + Outcome(exception.begin(), exception.end()) + boxes;
    }

    // A dialog that nobody expects, or that stays open, is a failure and ends in seconds.
    static void Watch(DWORD thread, const User& user, const std::atomic<bool>& isDone)
    {
        int dialogs = 0;
        for (; !isDone; Sleep(1)) {
            for (HWND dialog : window_automation::VisibleDialogs(thread)) {
                const bool isExpected = ++dialogs == 1 && user;
                if (isExpected) {
                    user(dialog);
                }
                if (!window_automation::WaitFor([&] { return !IsWindow(dialog); }, isExpected ? 5000 : 0)) {
                    ADD_FAILURE() << "a dialog that is not expected or stays open";
                    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
                    PostThreadMessageW(thread, WM_QUIT, 0, 0);
                }
            }
        }
        EXPECT_EQ(dialogs, user ? 1 : 0);
    }

    static inline std::atomic<int> faults;
    void* m_handler = AddVectoredExceptionHandler(TRUE, CountFault);
    std::list<product_services_guard::ImportHook> hooks;
};
