// ProductServicesGuard.dll of the tests' family through its exports, with a product record, a service, and a
// second thread as the user.
#pragma once

#include "support/loopback_server.h"

#include "support/import_hook.h"
#include "support/product_records.h"
#include "support/test_folder.h"

#include <product_services/guarded_calls.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <list>
#include <thread>
#include <window_automation.h>

/// What a guarded call left behind: its outcome, the text, and the result code, which most calls do not have.
struct Ended
{
    ProductServicesOutcome outcome;
    std::wstring text;
    std::uint32_t resultCode = PRODUCT_SERVICES_NO_RESULT;
    bool isTruncated = false;

    bool operator==(const Ended&) const = default;
};

inline const char* Name(ProductServicesOutcome outcome)
{
    constexpr const char* Names[]{
        "FAILED",
        "NEWER_RELEASE",
        "UP_TO_DATE",
        "BROWSER_OPENED",
        "USER_QUIT",
        "NO_PRODUCT_RECORD",
        "NOTHING_SENT",
        "REFUSED",
        "OTHER_STATUS",
        "UNREACHABLE",
        "TIMED_OUT",
        "CANCELLED",
        "UNTRUSTED_CERTIFICATE",
        "UNTRUSTED_ADDRESS",
        "INVALID_REPLY",
        "BUSY",
        "INVALID_PARAMETER"};
    return outcome < std::size(Names) ? Names[outcome] : "an unknown outcome";
}

inline void PrintTo(const Ended& ended, std::ostream* stream)
{
    *stream << Name(ended.outcome) << ", code " << static_cast<int>(ended.resultCode) << ", \""
            << testing::PrintToString(ended.text) << '"' << (ended.isTruncated ? ", truncated" : "");
}

inline const Ended UserQuit{PRODUCT_SERVICES_OUTCOME_USER_QUIT, L"User chose to quit!", 540};
inline const Ended NoUpgrades{PRODUCT_SERVICES_OUTCOME_UP_TO_DATE, L"No upgrades found!", 920};
inline const Ended TimedOut{PRODUCT_SERVICES_OUTCOME_TIMED_OUT, L"The time limit was exceeded."};
inline const Ended Cancelled{PRODUCT_SERVICES_OUTCOME_CANCELLED, L"The call was cancelled."};
inline const Ended Busy{PRODUCT_SERVICES_OUTCOME_BUSY, L"Another call is already in progress."};

class GuardTest : public testing::Test
{
protected:
    GuardTest()
    {
        records.Write(L"Product\\1.0", L"key", L"product-key");
        records.Write(L"Product\\1.0", L"version", L"20.1");
        params.size = sizeof params;
        params.languageId = PRODUCT_SERVICES_LANGUAGE_EN;
        params.productName = L"Product";
        params.productVersion = L"1.0";
        params.apiKey = L"api-key";
        params.options = PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE; // the tests' service speaks HTTP
        Load();
    }

    ~GuardTest() override { Unload(); }

    /// Loads the DLL anew, which knows of no call yet.
    void Reload()
    {
        Unload();
        ASSERT_EQ(GetModuleHandleW(L"ProductServicesGuardForTests.dll"), nullptr);
        Load();
    }

    /// Until the DLL is unloaded, it calls `replacement` instead.
    template <typename Function>
    void ReplaceImport(const char* name, Function* replacement)
    {
        EXPECT_TRUE(hooks.emplace_back().Install(guard, name, reinterpret_cast<void*>(replacement))) << name;
    }

    decltype(&GuardedUpgrade) Export(const char* name) const
    {
        return reinterpret_cast<decltype(&GuardedUpgrade)>(
            reinterpret_cast<void*>(GetProcAddress(guard, name)));
    }

    Ended Check() { return Call("GuardedCheckForUpdates", params); }
    Ended Upgrade() { return Call("GuardedUpgrade", params); }

    /// Makes a call with its own parameters, whatever the previous one left in them.
    Ended Call(const char* name, GuardedCallParams call) const
    {
        std::wstring text(1000, L'#');
        call.resultText = text.data();
        call.resultTextCapacity = static_cast<std::uint32_t>(text.size());
        call.resultCode = 77;
        call.isTextTruncated = 77;
        const ProductServicesOutcome outcome = Export(name)(&call);
        EXPECT_LE(call.isTextTruncated, 1u);
        return {outcome, text.substr(0, text.find(L'\0')), call.resultCode, call.isTextTruncated == 1};
    }

    /// The upgrade center, with another thread that works it as its user.
    Ended UpgradeWith(const std::function<void(HWND center)>& user)
    {
        std::thread thread(
            [&user, caller = GetCurrentThreadId()] { user(window_automation::WaitForDialog(caller)); });
        Ended ended = Upgrade();
        thread.join();
        return ended;
    }

    TestFolder folder;
    ProductRecords records;
    LoopbackServer service;
    HMODULE guard = nullptr;
    GuardedCallParams params{};

    /// What the loaded DLL did instead of showing a box, opening a URL and setting the cursor.
    static inline std::vector<std::wstring> boxes;
    static inline std::vector<std::wstring> opened;
    static inline int cursorChanges;
    static inline std::function<void()> atBox;

private:
    void Load()
    {
        boxes.clear();
        opened.clear();
        cursorChanges = 0;
        atBox = [] {};
        guard = LoadLibraryW(L"ProductServicesGuardForTests.dll");
        ReplaceImport("MessageBoxW", RecordBox);
        ReplaceImport("ShellExecuteW", RecordOpened);
        ReplaceImport("SetCursor", RecordCursor);
    }

    void Unload()
    {
        hooks.clear();
        FreeLibrary(guard);
    }

    static int WINAPI RecordBox(HWND, const wchar_t* text, const wchar_t*, UINT)
    {
        boxes.emplace_back(text);
        atBox();
        return IDOK;
    }

    static HINSTANCE WINAPI
    RecordOpened(HWND, const wchar_t*, const wchar_t* url, const wchar_t*, const wchar_t*, int)
    {
        opened.emplace_back(url);
        return reinterpret_cast<HINSTANCE>(INT_PTR{33});
    }

    static HCURSOR WINAPI RecordCursor(HCURSOR cursor)
    {
        ++cursorChanges;
        return cursor;
    }

    std::list<product_services_guard::ImportHook> hooks;
};
