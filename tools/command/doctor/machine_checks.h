// Checks of the machine: functions that read values, and rules that check them.
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

/// A DLL in an application's folder.
struct LibraryFile
{
    std::wstring name = {};
    std::wstring path = {};
    bool exists = false;
    /// IMAGE_FILE_HEADER::Machine; 0 if the file is not a DLL.
    WORD machine = 0;
    FileVersion version{};
    /// The package id in its version resource.
    std::wstring packageId = {};
};

/// Reads the two DLLs, of which an application ships one.
std::vector<LibraryFile> ReadLibraryFiles(const std::wstring& folder);
Finding CheckProgramFolder(const std::wstring& folder, const std::vector<LibraryFile>& files);
/// Compares a DLL with the version and the package of this program.
Finding CheckLibraryFile(
    const LibraryFile& file, const FileVersion& expectedVersion, const std::wstring& packageId);

/// Verifies the signature. Returns nullopt if that takes too long.
std::optional<product_services_guard::PublisherResult> ReadPublisher(const std::wstring& path);
Finding CheckSignature(
    const std::wstring& name, const std::optional<product_services_guard::PublisherResult>& result);

struct RegistryValue
{
    /// REG_NONE if the value does not exist.
    DWORD type = REG_NONE;
    /// Empty unless the type is REG_SZ.
    std::wstring text = {};
};

struct StoredRecord
{
    /// The registry key with its hive; empty if there is no record.
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

/// The calls that an administrator has disabled.
struct Policy
{
    bool disablesCheck = false;
    bool disablesUpgrade = false;
};

Policy GetPolicy();
Finding CheckPolicy(const Policy& policy);

/// The language file of a language.
struct LanguageFile
{
    std::wstring code; ///< "DE"
    std::wstring path = {};
    /// The error of opening the file for reading and writing, or of reading it; ERROR_SUCCESS if there was
    /// none.
    DWORD error = ERROR_SUCCESS;
    std::string bytes = {};
};

/// Reads the file that the library would load from the working directory. Changes nothing.
LanguageFile ReadLanguageFile(std::int32_t languageId);
Finding CheckLanguageFile(const LanguageFile& file);

/// Returns the scaling in percent; 100 means 96 DPI.
int GetDisplayScaling();
Finding CheckDisplayScaling(int percent);

} // namespace product_services_tool
