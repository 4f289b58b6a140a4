// ProductServicesGuard.dll in a folder of the test's own, with a library beside it that the test chooses.
#pragma once

#include "support/loopback_server.h"

#include "support/product_records.h"
#include "support/test_folder.h"

#include <product_services/guarded_calls.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <import_hook.h>
#include <iterator>

inline const std::wstring NoUpgrades = L"reported 920: No upgrades found!";

/// The guard of a folder, which is loaded while this lives.
class Guard
{
public:
    explicit Guard(const std::filesystem::path& folder)
        : m_module(LoadLibraryExW(
              (folder / "ProductServicesGuard.dll").c_str(), nullptr,
              LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32))
    {
    }
    ~Guard() { FreeLibrary(m_module); }

    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

    std::uint32_t Check(GuardedCall* call) const { return Find("GuardedCheckForUpdates")(call); }
    std::uint32_t Upgrade(GuardedCall* call) const { return Find("GuardedUpgrade")(call); }

private:
    decltype(&GuardedUpgrade) Find(const char* name) const
    {
        void* const found = reinterpret_cast<void*>(GetProcAddress(m_module, name));
        return reinterpret_cast<decltype(&GuardedUpgrade)>(found);
    }

    HMODULE m_module;
};

class GuardTest : public testing::Test
{
protected:
    GuardTest()
    {
        records.Write(L"Product\\1.0", L"key", L"product-key");
        records.Write(L"Product\\1.0", L"version", L"20.1");
        record.size = sizeof record;
        record.languageId = PRODUCT_SERVICES_LANGUAGE_EN;
        record.productName = L"Product";
        record.productVersion = L"1.0";
        record.apiKey = L"api-key";
        record.text = text.data();
        record.textCapacity = static_cast<std::uint32_t>(text.size());
        InstallGuard(app);
        InstallLibrary(app);
    }

    // Libraries stay loaded without their guards, and a file in use cannot go with its folder.
    ~GuardTest() override
    {
        for (const auto& file : std::filesystem::recursive_directory_iterator(app)) {
            while (const HMODULE library = GetModuleHandleW(file.path().c_str())) {
                FreeLibrary(library);
            }
        }
    }

    /// What was built, in the folder of the test program.
    static std::filesystem::path Built(const char* file)
    {
        std::array<wchar_t, MAX_PATH> program{};
        GetModuleFileNameW(nullptr, program.data(), MAX_PATH);
        return std::filesystem::path(program.data()).replace_filename(file);
    }

    static void InstallGuard(const std::filesystem::path& at)
    {
        std::filesystem::create_directories(at);
        std::filesystem::copy_file(Built("ProductServicesGuard.dll"), at / "ProductServicesGuard.dll");
    }

    static void InstallLibrary(
        const std::filesystem::path& at, const char* file = "ProductServicesForTests.dll")
    {
        std::filesystem::remove(at / "ProductServices.dll");
        std::filesystem::copy_file(Built(file), at / "ProductServices.dll");
    }

    static std::filesystem::path LanguageFile(const std::wstring& code)
    {
        return L"lang\\" + code + L"\\Vemo_" + code + L".lang";
    }

    /// A language file in which `message` stands for "No upgrades found!" and all else is empty.
    static void WriteLanguage(const std::wstring& code, const std::wstring& message)
    {
        std::filesystem::create_directories(LanguageFile(code).parent_path());
        WriteFile(LanguageFile(code), std::wstring(70, L'\n') + message + std::wstring(18, L'\n'));
    }

    /// The library of the folder calls `replacement` instead, while the hook lives.
    template <typename Function>
    void ReplaceImport(product_services_guard::ImportHook& hook, const char* name, Function* replacement)
    {
        const HMODULE library = LoadLibraryW((app / "ProductServices.dll").c_str());
        EXPECT_TRUE(hook.Install(library, name, reinterpret_cast<void*>(replacement)));
    }

    /// How the call ends, such as "reported 920: No upgrades found!".
    std::wstring Check(const Guard& guard) { return Call(guard, &Guard::Check); }
    std::wstring Upgrade(const Guard& guard) { return Call(guard, &Guard::Upgrade); }

    TestFolder folder;
    std::filesystem::path app = std::filesystem::current_path() / "app";
    ProductRecords records;
    LoopbackServer service;
    std::wstring text = std::wstring(1000, L'#');
    GuardedCall record{};

private:
    std::wstring Call(const Guard& guard, std::uint32_t (Guard::*function)(GuardedCall*) const)
    {
        constexpr const wchar_t* Outcomes[]{L"nothing reported", L"reported",   L"call failed",
                                            L"not called",       L"bad record", L"untrusted address",
                                            L"message withheld"};
        // What a call before has left.
        std::fill(text.begin(), text.end(), L'#');
        record.resultCode = 77;
        record.isTextCut = 77;
        std::wstring seen = Outcomes[(guard.*function)(&record)];
        if (record.resultCode != 0xFFFFFFFF) {
            seen += L" " + std::to_wstring(record.resultCode);
        }
        if (record.isTextCut != 0) {
            seen += record.isTextCut == 1 ? L", cut" : L", isTextCut is neither 0 nor 1";
        }
        return seen + L": " + text.substr(0, text.find(L'\0'));
    }
};
