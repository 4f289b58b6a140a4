#include "checks.h"
#include "loaded_guard.h"
#include "within_time.h"

#include <fstream>
#include <string_view>
#include <vector>
#include <windows.h>

namespace doctor {
namespace {

using std::chrono::seconds;

constexpr seconds SignatureLimit{30};
constexpr DWORD LongestPath = 32768;
constexpr wchar_t GuardName[] = L"ProductServicesGuard.dll";

std::wstring PathBesideProgram(const wchar_t* name)
{
    std::wstring path(LongestPath, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), LongestPath));
    return path.substr(0, path.rfind(L'\\') + 1) + name;
}

std::wstring FileVersion(const std::wstring& path)
{
    std::vector<char> resource(GetFileVersionInfoSizeW(path.c_str(), nullptr));
    VS_FIXEDFILEINFO* info = nullptr;
    UINT size = 0;
    const bool isRead =
        !resource.empty() &&
        GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()) &&
        VerQueryValueW(resource.data(), L"\\", reinterpret_cast<void**>(&info), &size);
    if (!isRead || size < sizeof *info) {
        return L"without a version";
    }
    return L"version " + std::to_wstring(HIWORD(info->dwFileVersionMS)) + L"." +
           std::to_wstring(LOWORD(info->dwFileVersionMS)) + L"." +
           std::to_wstring(HIWORD(info->dwFileVersionLS));
}

// Zero for a file that is no program of Windows.
WORD MachineType(const std::wstring& path)
{
    std::ifstream file(path.c_str(), std::ios::binary);
    IMAGE_DOS_HEADER dos{};
    file.read(reinterpret_cast<char*>(&dos), sizeof dos);
    file.seekg(dos.e_lfanew);
    struct
    {
        DWORD signature;
        IMAGE_FILE_HEADER file;
    } header{};
    file.read(reinterpret_cast<char*>(&header), sizeof header);
    return file && header.signature == IMAGE_NT_SIGNATURE ? header.file.Machine : WORD{0};
}

bool IsThere(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

} // namespace

Finding CheckLibrary(const wchar_t* name)
{
    const std::wstring path = PathBesideProgram(name);
    if (!IsThere(path)) {
        return {State::Wrong, name, L"is missing: there is no " + path, rows::Exception};
    }
    if (MachineType(path) != IMAGE_FILE_MACHINE_AMD64) {
        return {State::Wrong, name, L"is damaged, or is not for 64-bit Windows: " + path, rows::Exception};
    }
    if (name == std::wstring_view(GuardName) && !GuardFailure().empty()) {
        return {State::Wrong, name, L"cannot be called: " + GuardFailure() + L": " + path, rows::Exception};
    }
    const std::wstring version = FileVersion(path);
    const std::wstring sentence = version + L", for 64-bit Windows (x64): " + path;
    if (GuardFailure().empty() && version != FileVersion(PathBesideProgram(GuardName))) {
        return {
            State::Wrong, name, std::wstring(L"is of another package than ") + GuardName + L": " + sentence,
            rows::Exception};
    }
    return {State::Ok, name, sentence, rows::Exception};
}

Finding CheckSignature(const wchar_t* name)
{
    const std::wstring check = std::wstring(L"signature of ") + name;
    const std::wstring path = PathBesideProgram(name);
    if (!IsThere(path)) {
        return {State::Note, check, L"not looked at, since the file is missing", rows::Exception};
    }
    if (!GuardFailure().empty()) {
        return {State::Note, check, L"left out: " + GuardFailure(), rows::Exception};
    }
    // No publisher has this name, so that the sentence names the one who has signed.
    const auto result =
        WithinTime(SignatureLimit, [=] { return product_services::VerifyPublisher(path, L"?"); });
    if (!result) {
        return {
            State::Note, check, L"Windows has not verified it within " + InWords(SignatureLimit),
            rows::Exception};
    }
    switch (result->found) {
    case PRODUCT_SERVICES_PUBLISHER_ANOTHER:
        return {
            State::Ok, check, L"trusted, by " + result->text.substr(result->text.rfind(L": ") + 2),
            rows::Exception};
    case PRODUCT_SERVICES_PUBLISHER_CHANGED:
        return {State::Wrong, check, result->text, rows::Exception};
    default:
        return {State::Note, check, result->text, rows::Exception};
    }
}

} // namespace doctor
