// A DLL of the tests' product family through its exports, with a product record, a service, and a second
// thread in the place of the user.
#pragma once

#include "support/loopback_server.h"

#include "support/product_records.h"
#include "support/test_folder.h"

#include <import_hook.h>
#include <window_automation.h>

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <list>
#include <thread>

class DllTest : public testing::Test
{
protected:
    /// What the user does with a dialog.
    using DialogAction = std::function<void(HWND dialog)>;

    /// Does not load the DLL, since that calls PrepareDll of the derived class.
    explicit DllTest(const wchar_t* dllName) : m_dllName(dllName)
    {
        records.Write(L"Product\\1.0", L"key", L"product-key");
        records.Write(L"Product\\1.0", L"version", L"20.1");
    }

    ~DllTest() override { Unload(); }

    /// Replaces imports of the DLL that has just been loaded.
    virtual void PrepareDll() = 0;

    void Load()
    {
        dll = LoadLibraryW(m_dllName);
        PrepareDll();
    }

    void Unload()
    {
        m_hooks.clear();
        FreeLibrary(std::exchange(dll, nullptr));
    }

    /// Loads the DLL again, so that the next call is its first one.
    void Reload()
    {
        Unload();
        ASSERT_EQ(GetModuleHandleW(m_dllName), nullptr);
        Load();
    }

    /// Makes the DLL call `replacement` instead of the function `name` until it is unloaded.
    template <typename Function>
    void ReplaceImport(const char* name, Function* replacement)
    {
        EXPECT_TRUE(m_hooks.emplace_back().Install(dll, name, reinterpret_cast<void*>(replacement))) << name;
    }

    template <typename Function>
    Function GetExport(const char* name) const
    {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(dll, name)));
    }

    /// Makes `call` on this thread while another thread does `action` with the dialog that appears. Without
    /// an action, no dialog may appear.
    template <typename Call>
    auto CallWithUser(const DialogAction& action, const Call& call)
    {
        // Initialises what both threads would initialise at the same time.
        window_automation::VisibleDialogs(GetCurrentThreadId());
        std::atomic<bool> isDone = false;
        std::thread user([&, caller = GetCurrentThreadId()] { HandleDialogs(caller, action, isDone); });
        auto result = call();
        isDone = true;
        user.join();
        return result;
    }

    TestFolder folder;
    ProductRecords records;
    LoopbackServer service;
    HMODULE dll = nullptr;

private:
    static void HandleDialogs(DWORD thread, const DialogAction& action, const std::atomic<bool>& isDone)
    {
        bool isExpected = action != nullptr;
        for (; !isDone; Sleep(1)) {
            for (const HWND dialog : window_automation::VisibleDialogs(thread)) {
                if (std::exchange(isExpected, false)) {
                    action(dialog);
                    window_automation::WaitFor([dialog] { return !IsWindow(dialog); }, 5000);
                }
                if (IsWindow(dialog)) {
                    ADD_FAILURE() << "a dialog was not expected, or stays open";
                    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
                    PostThreadMessageW(thread, WM_QUIT, 0, 0);
                }
            }
        }
        EXPECT_FALSE(isExpected) << "no dialog appeared";
    }

    const wchar_t* m_dllName;
    std::list<ImportHook> m_hooks;
};
