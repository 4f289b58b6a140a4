// ProductServicesGuard.dll of the tests' family, as a host sees it.
#pragma once

#include "support/dll_fixture.h"

#include <product_services/guarded_calls.h>

#include <cstdint>
#include <iterator>

/// What a guarded call returns and writes into its structure.
struct GuardedResult
{
    ProductServicesOutcome outcome;
    std::wstring text;
    std::uint32_t resultCode = PRODUCT_SERVICES_NO_RESULT;
    bool isTruncated = false;

    bool operator==(const GuardedResult&) const = default;
};

inline const char* ToString(ProductServicesOutcome outcome)
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
        "INVALID_PARAMETER",
        "DISABLED_BY_POLICY"};
    return outcome < std::size(Names) ? Names[outcome] : "an unknown outcome";
}

inline void PrintTo(const GuardedResult& result, std::ostream* stream)
{
    *stream << ToString(result.outcome) << ", code " << static_cast<int>(result.resultCode) << ", "
            << testing::PrintToString(result.text) << (result.isTruncated ? ", truncated" : "");
}

inline const GuardedResult UserQuit{PRODUCT_SERVICES_OUTCOME_USER_QUIT, L"User chose to quit!", 540};
inline const GuardedResult NoUpgrades{PRODUCT_SERVICES_OUTCOME_UP_TO_DATE, L"No upgrades found!", 920};
inline const GuardedResult TimedOut{PRODUCT_SERVICES_OUTCOME_TIMED_OUT, L"The time limit was exceeded."};
inline const GuardedResult Cancelled{PRODUCT_SERVICES_OUTCOME_CANCELLED, L"The call was cancelled."};
inline const GuardedResult Busy{PRODUCT_SERVICES_OUTCOME_BUSY, L"Another call is already in progress."};

/// A reply with one offer whose URL is valid.
inline constexpr char GoodOffer[] = R"([{"name":"X","version":"2","url":"https://shop.example/x"}])";
inline const std::wstring GoodUrl = L"https://shop.example/x";
inline const GuardedResult NewerRelease{PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE, GoodUrl, 200};

class GuardTest : public DllTest
{
protected:
    GuardTest() : DllTest(L"TestProductServicesGuard.dll")
    {
        params.size = sizeof params;
        params.languageId = PRODUCT_SERVICES_LANGUAGE_EN;
        params.productName = L"Product";
        params.productVersion = L"1.0";
        params.apiKey = L"api-key";
        params.options = PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE; // the tests' service speaks HTTP
        Load();
    }

    decltype(&GuardedUpgrade) Export(const char* name) const
    {
        return GetExport<decltype(&GuardedUpgrade)>(name);
    }

    GuardedResult Check() { return Call("GuardedCheckForUpdates"); }

    /// Makes a call during which no upgrade center may appear. If one does, it is closed.
    GuardedResult Upgrade() { return UpgradeWith(nullptr); }

    /// Shows the upgrade center to a user who does `action` with its window.
    GuardedResult UpgradeWith(const DialogAction& action)
    {
        return CallWithUser(action, [this] { return Call("GuardedUpgrade"); });
    }

    /// Leaves the upgrade center with Exit.
    static void ClickExit(HWND center) { window_automation::ClickButton(center, IDCANCEL); }

    GuardedCallParams params{};

    /// What the DLL did instead of showing a message box, opening a URL and setting the cursor.
    static inline std::vector<std::wstring> boxes;
    static inline std::vector<std::wstring> opened;
    static inline int cursorChanges;
    static inline std::function<void()> onMessageBox;

private:
    /// Makes a call with a copy of the parameters.
    GuardedResult Call(const char* name) const
    {
        std::wstring text(1000, L'#');
        GuardedCallParams call = params;
        call.resultText = text.data();
        call.resultTextCapacity = static_cast<std::uint32_t>(text.size());
        call.resultCode = 77;
        call.isTextTruncated = 77;
        const ProductServicesOutcome outcome = Export(name)(&call);
        EXPECT_LE(call.isTextTruncated, 1u);
        return {outcome, text.substr(0, text.find(L'\0')), call.resultCode, call.isTextTruncated == 1};
    }

    void PrepareDll() override
    {
        boxes.clear();
        opened.clear();
        cursorChanges = 0;
        onMessageBox = [] {};
        ReplaceImport("MessageBoxW", RecordMessageBox);
        ReplaceImport("ShellExecuteW", RecordShellExecute);
        ReplaceImport("SetCursor", RecordSetCursor);
    }

    static int WINAPI RecordMessageBox(HWND, const wchar_t* text, const wchar_t*, UINT)
    {
        boxes.emplace_back(text);
        onMessageBox();
        return IDOK;
    }

    static HINSTANCE WINAPI
    RecordShellExecute(HWND, const wchar_t*, const wchar_t* url, const wchar_t*, const wchar_t*, int)
    {
        opened.emplace_back(url);
        return reinterpret_cast<HINSTANCE>(INT_PTR{33});
    }

    static HCURSOR WINAPI RecordSetCursor(HCURSOR cursor)
    {
        ++cursorChanges;
        return cursor;
    }
};
