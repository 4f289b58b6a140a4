// Checks of an application's DLL.
#include "doctor/machine_checks.h"

#include "doctor/run_with_timeout.h"
#include "signature/signature.h"
#include "unique_handle.h"

#include <algorithm>
#include <fstream>

namespace product_services_tool {
namespace {

using product_services_guard::PublisherResult;

// Windows queries the issuers for revoked certificates, which may take long.
constexpr std::chrono::seconds SignatureTimeout{20};

WORD ReadMachine(const std::wstring& path)
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

void ReadVersionResource(LibraryFile& file)
{
    std::vector<char> resource(GetFileVersionInfoSizeW(file.path.c_str(), nullptr));
    const auto size = static_cast<DWORD>(resource.size());
    if (resource.empty() || !GetFileVersionInfoW(file.path.c_str(), 0, size, resource.data())) {
        return;
    }
    void* value = nullptr;
    UINT length = 0;
    if (VerQueryValueW(resource.data(), L"\\", &value, &length) && length >= sizeof(VS_FIXEDFILEINFO)) {
        const auto& info = *static_cast<const VS_FIXEDFILEINFO*>(value);
        file.version = {
            HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS), HIWORD(info.dwFileVersionLS)};
    }
    if (VerQueryValueW(resource.data(), L"\\StringFileInfo\\040904b0\\Comments", &value, &length)) {
        file.packageId = static_cast<const wchar_t*>(value);
    }
}

LibraryFile ReadLibraryFile(const std::wstring& folder, const wchar_t* name)
{
    LibraryFile file{.name = name, .path = folder + L'\\' + name};
    file.exists = GetFileAttributesW(file.path.c_str()) != INVALID_FILE_ATTRIBUTES;
    if (file.exists) {
        file.machine = ReadMachine(file.path);
        ReadVersionResource(file);
    }
    return file;
}

} // namespace

std::vector<LibraryFile> ReadLibraryFiles(const std::wstring& folder)
{
    return {
        ReadLibraryFile(folder, L"ProductServicesGuard.dll"),
        ReadLibraryFile(folder, L"ProductServices.dll")};
}

std::optional<PublisherResult> ReadPublisher(const std::wstring& path)
{
    return RunWithTimeout(SignatureTimeout, [path]() -> PublisherResult {
        const HANDLE handle =
            CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            return {PRODUCT_SERVICES_PUBLISHER_FILE_ERROR, L"The file could not be opened."};
        }
        const product_services_guard::UniqueHandle owner(handle);
        const auto signature = product_services_guard::ReadSignature(handle, path.c_str());
        // This program does not know the application's publisher, so it accepts any.
        return product_services_guard::EvaluateSignature(signature, signature.signer);
    });
}

Finding CheckProgramFolder(const std::wstring& folder, const std::vector<LibraryFile>& files)
{
    Finding finding{Severity::Ok, L"program folder", folder, help_anchors::Installation};
    const auto count =
        std::count_if(files.begin(), files.end(), [](const LibraryFile& file) { return file.exists; });
    if (count == 0) {
        finding.severity = Severity::Error;
        finding.message += L" has neither DLL; --program names the application's folder";
    } else if (count > 1) {
        finding.severity = Severity::Warning;
        finding.message += L" has both DLLs; an application needs only the one that it loads";
    }
    return finding;
}

Finding CheckLibraryFile(
    const LibraryFile& file, const FileVersion& expectedVersion, const std::wstring& packageId)
{
    Finding finding{Severity::Error, L"library", file.name, help_anchors::Installation};
    if (file.machine != IMAGE_FILE_MACHINE_AMD64) {
        finding.message += L" is corrupt or not for 64-bit Windows (x64)";
    } else if (file.packageId != packageId) {
        finding.message += L" belongs to the package \"" + file.packageId + L"\" instead of " + packageId;
    } else if (file.version != expectedVersion) {
        finding.severity = Severity::Warning;
        finding.message += L" is version " + ToString(file.version) +
                           (file.version < expectedVersion ? L", older" : L", newer") +
                           L" than this program, to which the other findings apply";
    } else {
        finding.severity = Severity::Ok;
        finding.message += L" is version " + ToString(file.version) + L" of " + packageId;
    }
    return finding;
}

Finding CheckSignature(const std::wstring& name, const std::optional<PublisherResult>& result)
{
    Finding finding{Severity::Warning, L"signature", name, help_anchors::Installation};
    finding.message += L": " + (result ? result->text : L"Windows did not verify it in time");
    if (result && result->status == PRODUCT_SERVICES_PUBLISHER_TRUSTED) {
        finding.severity = Severity::Ok;
    } else if (result && result->status == PRODUCT_SERVICES_PUBLISHER_FILE_MODIFIED) {
        finding.severity = Severity::Error;
    }
    return finding;
}

} // namespace product_services_tool
