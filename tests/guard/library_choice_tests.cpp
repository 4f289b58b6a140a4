// Which library the guard calls, and what it says where it calls none.
#include "guard_fixture.h"

using LibraryOfTheGuard = GuardTest;

// Makes bytes of the library others.
static void Patch(const std::filesystem::path& library, const std::string& bytes, const std::string& others)
{
    std::ifstream file(library, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), {}};
    file.close();
    const std::size_t at = content.find(bytes);
    ASSERT_NE(at, content.npos);
    content.replace(at, bytes.size(), others);
    std::ofstream(library, std::ios::binary)
        .write(content.data(), static_cast<std::streamsize>(content.size()));
}

// The working directory has a library that could be called.
TEST_F(LibraryOfTheGuard, SaysWhyALibraryCannotBeCalledAndCallsItWhenItIsMended)
{
    using namespace std::string_literals;
    using Path = std::filesystem::path;
    const std::string version = "\xBD\x04\xEF\xFE\0\0\1\0\0\0"s;
    const std::wstring isMissing =
        L"ProductServices.dll, or a library that it needs, is not in the folder of ProductServicesGuard.dll.";
    const std::wstring isDamaged =
        L"ProductServices.dll is damaged, or is for another processor than this program.";
    const std::wstring isAnother = L"ProductServices.dll is another library: it lacks the two calls.";
    const std::wstring otherVersion =
        L"ProductServices.dll has another major version than ProductServicesGuard.dll.";
    struct
    {
        const char* name;
        std::function<void(const Path& library)> spoil;
        std::wstring sentence;
    } const cases[]{
        {"missing", [](const Path& library) { std::filesystem::remove(library); }, isMissing},
        {"half a file", [](const Path& library) { std::filesystem::resize_file(library, 5000); }, isDamaged},
        {"for 32 bits", [](const Path& library) { Patch(library, "PE\0\0\x64\x86"s, "PE\0\0\x4C\1"s); },
         isDamaged},
        {"no check", [](const Path& library) { Patch(library, "\0CheckForUpdates"s, "\0CheckForUpdatez"s); },
         isAnother},
        {"no upgrade", [](const Path& library) { Patch(library, "\0Upgrade\0"s, "\0Upgradf\0"s); },
         isAnother},
        {"a later version", [&](const Path& library) { Patch(library, version + '\1', version + '\2'); },
         otherVersion},
    };
    InstallLibrary(std::filesystem::current_path());
    service.Answer("");
    for (const auto& [name, spoil, sentence] : cases) {
        SCOPED_TRACE(name);
        const Path place = app / name;
        InstallGuard(place);
        InstallLibrary(place);
        spoil(place / "ProductServices.dll");
        const Guard guard(place);
        EXPECT_EQ(Upgrade(guard), L"not called: " + sentence);
        EXPECT_EQ(GetModuleHandleW((place / "ProductServices.dll").c_str()), nullptr) << "stays loaded";
        InstallLibrary(place);
        EXPECT_EQ(Upgrade(guard), NoUpgrades);
    }
}
