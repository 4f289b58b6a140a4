// ProductServices.dll of the tests' family, as a host sees it.
#pragma once

#include "support/dll_fixture.h"

#include "product_services/product_services.h"
#include "ui/resource.h"

#include <algorithm>
#include <cstdint>
#include <regex>

/// What a call leaves behind: "CODE TEXT" or "nothing", and after commas the exception that it threw and the
/// message boxes that it showed.
using Outcome = std::wstring;

inline const Outcome Nothing = L"nothing";
inline const Outcome Quit = L"540 User chose to quit!";
inline const Outcome NoRecord = L"950 No data was found for the installed product.";
inline const Outcome NoJson = L"nothing, [json.exception.parse_error.101]";

class LibraryTest : public DllTest
{
protected:
    static constexpr std::uint32_t UntouchedCode = 0xFFFFFFFF;

    LibraryTest() : DllTest(L"TestProductServices.dll") { Load(); }

    ~LibraryTest() override
    {
        Unload();
        EXPECT_TRUE(HeapValidate(GetProcessHeap(), 0, nullptr))
            << "a block was written to past its end or after it was freed; Wine says which";
        RemoveVectoredExceptionHandler(m_handler);
        EXPECT_EQ(accessViolations.exchange(0), 0) << "the system ignores them in a window procedure";
    }

    Outcome Check() { return Call("CheckForUpdates"); }

    /// Shows the upgrade center to a user who does `action` with its window.
    Outcome RunUpgrade(const DialogAction& action = {})
    {
        return CallWithUser(action, [this] { return Call("Upgrade"); });
    }

    /// Shows the upgrade center to a user who does `action` and then leaves with Exit.
    Outcome OpenAndExit(const DialogAction& action = [](HWND) {})
    {
        return RunUpgrade([&](HWND center) {
            action(center);
            window_automation::ClickButton(center, IDCANCEL);
        });
    }

    static HWND OfferList(HWND center) { return GetDlgItem(center, IDC_UPGRADE_OFFERS); }

    /// Whether the requests since the last call of this match a pattern; a failure shows them.
    testing::AssertionResult RequestsMatch(const std::string& pattern)
    {
        const std::string requests = service.TakeRequests();
        return testing::AssertionResult(std::regex_search(requests, std::regex(pattern)))
               << "the requests are \"" << requests << '"';
    }

    /// Installs a language file in which the text of each id is "text <id>", and selects its language.
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

    HostContext host{L"Product", L"1.0", L"api-key", 120, nullptr, 0, nullptr, nullptr, nullptr, 0};
    /// The copy of `host` that was passed to the last call.
    HostContext lastContext{};
    bool passTextBuffer = true;

    /// What the DLL did instead of sleeping, showing a message box and opening a URL.
    static inline int sleepCount;
    static inline std::function<void()> onSleep;
    static inline std::wstring boxes;
    static inline std::vector<std::wstring> opened;

private:
    void PrepareDll() override
    {
        sleepCount = 0;
        onSleep = [] {};
        opened.clear();
        ReplaceImport("Sleep", RecordSleep);
        ReplaceImport("MessageBoxW", RecordMessageBox);
        ReplaceImport("ShellExecuteW", RecordShellExecute);
    }

    // Visual Studio's runtime imports Sleep, too, and calls it with other times.
    static void RecordSleep(DWORD milliseconds)
    {
        if (milliseconds != 150) {
            SleepEx(milliseconds, FALSE);
            return;
        }
        ++sleepCount;
        onSleep();
    }

    static int RecordMessageBox(HWND owner, const wchar_t* text, const wchar_t* caption, UINT flags)
    {
        EXPECT_EQ(owner, nullptr);
        EXPECT_EQ(flags, static_cast<UINT>(MB_OK | MB_ICONERROR)) << "even for good news";
        boxes += std::wstring(L", box ") + caption + L": " + text;
        return IDOK;
    }

    static HINSTANCE RecordShellExecute(
        HWND, const wchar_t* verb, const wchar_t* file, const wchar_t* parameters, const wchar_t* directory,
        int show)
    {
        EXPECT_EQ(verb, nullptr) << "the default action";
        EXPECT_EQ(parameters, nullptr);
        EXPECT_EQ(directory, nullptr);
        EXPECT_EQ(show, SW_SHOWNORMAL);
        opened.emplace_back(file);
        return nullptr; // a failure, which the library ignores
    }

    Outcome Call(const char* name)
    {
        std::wstring text(64 * 1024, L'#');
        lastContext = host;
        lastContext.resultCode = UntouchedCode;
        lastContext.resultText = passTextBuffer ? text.data() : nullptr;
        boxes.clear();
        std::string exception;
        try {
            GetExport<decltype(&Upgrade)>(name)(&lastContext);
        } catch (const std::exception& error) {
            // Where in the text the JSON library stopped is not ours to test.
            exception = std::string(", ") + error.what();
            exception.resize(std::min(exception.find(" parse error at"), exception.size()));
        }
        Outcome outcome = Nothing;
        if (lastContext.resultCode != UntouchedCode) {
            outcome = std::to_wstring(lastContext.resultCode) + L" " + text.substr(0, text.find(L'\0'));
        } else {
            EXPECT_EQ(text.front(), L'#') << "a text without a code";
        }
        return outcome + Outcome(exception.begin(), exception.end()) + boxes;
    }

    static LONG CALLBACK CountAccessViolation(EXCEPTION_POINTERS* exception)
    {
        accessViolations += exception->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION;
        return EXCEPTION_CONTINUE_SEARCH;
    }

    static inline std::atomic<int> accessViolations;
    void* m_handler = AddVectoredExceptionHandler(TRUE, CountAccessViolation);
};
