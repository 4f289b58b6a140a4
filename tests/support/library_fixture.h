// The DLL through its exports, with a product record, a service, and a second thread as the user.
#pragma once

#include "support/loopback_server.h"

#include "product_services/product_services.h"
#include "support/heap_check.h"
#include "support/product_record_fixture.h"

#include <automation.h>

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>

inline constexpr std::uint32_t NothingReported = 0xFFFFFFFF;

/// What a call left behind.
struct Outcome
{
    std::uint32_t code = NothingReported;
    std::wstring text;
    std::string exception;

    bool operator==(const Outcome&) const = default;
};

inline void PrintTo(const Outcome& outcome, std::ostream* stream)
{
    *stream << outcome.code << " \"" << std::string(outcome.text.begin(), outcome.text.end()) << "\" "
            << outcome.exception;
}

inline const Outcome Untouched{NothingReported, L"untouched", ""};

class LibraryTest : public testing::Test
{
protected:
    using User = std::function<void(DWORD hostThread)>;

    LibraryTest()
    {
        m_library = LoadLibraryW(L"ProductServicesForTests.dll");
        context.productName = L"Product";
        context.productVersion = L"1.0";
        context.apiKey = L"api-key";
        context.languageId = 120;
        context.resultText = m_text.data();
        records.Write(L"Product", L"1.0", L"product-key", L"20.1");
    }

    void TearDown() override { EXPECT_TRUE(HeapsAreSound()); }

    ~LibraryTest() override { FreeLibrary(m_library); }

    Outcome Check(const User& user = {}) { return Call("CheckForUpdates", user); }
    Outcome ShowUpgrades(const User& user = {}) { return Call("Upgrade", user); }

    /// Calls an export on this thread while `user` works its windows from another.
    Outcome Call(const char* name, const User& user)
    {
        context.resultCode = NothingReported;
        m_text.assign(m_text.size(), L'#');
        std::wcscpy(m_text.data(), L"untouched");
        Outcome outcome;
        std::thread userThread;
        if (user) {
            userThread = std::thread(user, GetCurrentThreadId());
        }
        try {
            reinterpret_cast<decltype(&CheckForUpdates)>(
                reinterpret_cast<void*>(GetProcAddress(m_library, name)))(&context);
        } catch (const std::exception& error) {
            outcome.exception = error.what();
        }
        if (userThread.joinable()) {
            userThread.join();
        }
        outcome.code = context.resultCode;
        outcome.text = m_text.data();
        return outcome;
    }

    /// The dialog that the call shows. Where none comes up, fails the test and ends the call.
    static HWND ShownDialog(DWORD hostThread)
    {
        const HWND dialog = automation::WaitForDialog(hostThread);
        if (!dialog) {
            ADD_FAILURE() << "no dialog came up";
            PostThreadMessageW(hostThread, WM_QUIT, 0, 0);
        }
        return dialog;
    }

    /// A user who reads one message box into `said` and presses OK.
    static User ReadsMessageBox(std::wstring& said)
    {
        return [&said](DWORD hostThread) {
            const HWND box = ShownDialog(hostThread);
            said = automation::WindowText(box) + L": " + automation::MessageBoxText(box);
            automation::Press(box, IDOK);
        };
    }

    HMODULE Library() const { return m_library; }

    ProductRecords records;
    LoopbackServer service;
    HostContext context{};

private:
    HMODULE m_library;
    std::vector<wchar_t> m_text = std::vector<wchar_t>(64 * 1024);
};
