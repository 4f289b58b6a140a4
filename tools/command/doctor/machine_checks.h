// Checks of the machine: rules over plain values, and functions that read those.
#pragma once

#include "doctor/finding.h"
#include "product_version.h"
#include "signature/publisher_result.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>
#include <windows.h>

namespace product_services_tool {

/// A DLL in the folder of a program.
struct LibraryFile
{
    std::wstring name = {};
    std::wstring path = {};
    bool exists = false;
    /// As in IMAGE_FILE_HEADER; 0 if the file is not a DLL.
    WORD machine = 0;
    FileVersion version{};
    /// The package that its version resource names.
    std::wstring packageId = {};
};

/// The two DLLs of which an application ships one.
std::vector<LibraryFile> ReadLibraryFiles(const std::wstring& folder);
Finding CheckProgramFolder(const std::wstring& folder, const std::vector<LibraryFile>& files);
/// Compares a DLL with this program, which is `expectedVersion` of the package.
Finding CheckLibraryFile(
    const LibraryFile& file, const FileVersion& expectedVersion, const std::wstring& packageId);

/// What Windows says of the signature; nothing if it takes too long.
std::optional<product_services_guard::PublisherResult> ReadPublisher(const std::wstring& path);
Finding CheckSignature(
    const std::wstring& name, const std::optional<product_services_guard::PublisherResult>& result);

struct RegistryValue
{
    /// REG_NONE if there is no such value.
    DWORD type = REG_NONE;
    /// Empty if it is not REG_SZ.
    std::wstring text = {};
};

struct StoredRecord
{
    /// The registry key with its hive; empty if there is none.
    std::wstring keyPath = {};
    RegistryValue key = {};
    RegistryValue version = {};
};

/// Reads the record from where the library looks for it.
StoredRecord ReadStoredRecord(const std::wstring& product, const std::wstring& version);
Finding CheckRecord(const StoredRecord& record, const std::wstring& product, const std::wstring& version);
Finding CheckRecordKey(const RegistryValue& value);
Finding CheckRecordVersion(const RegistryValue& value);
Finding CheckApiKey(const std::wstring& apiKey);

/// The file with the texts of a language.
struct LanguageFile
{
    std::wstring code; ///< "DE"
    std::wstring path = {};
    /// Why it could not be opened for reading and writing or be read; ERROR_SUCCESS if it could.
    DWORD error = ERROR_SUCCESS;
    std::string bytes = {};
};

/// Reads the file that the library would load in the working directory. Creates and changes nothing.
LanguageFile ReadLanguageFile(std::int32_t languageId);
Finding CheckLanguageFile(const LanguageFile& file);

/// 100 for a screen of 96 DPI.
int ReadDisplayScaling();
Finding CheckDisplayScaling(int percent);

} // namespace product_services_tool
