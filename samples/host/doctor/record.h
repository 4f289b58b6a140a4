#pragma once

#include "doctor.h"

#include <string>
#include <windows.h>

namespace doctor {

/// A value of a record in the registry.
struct Member
{
    /// REG_NONE where there is no such value.
    DWORD type = REG_NONE;
    /// Empty where it is not REG_SZ.
    std::wstring text;
};

/// The record of a product, as its installer wrote it.
struct Record
{
    /// The registry key with its hive; empty where there is none.
    std::wstring place;
    Member key;
    Member version;
};

Record ReadRecord(const Patient& patient);

/// A key as it may be shown: its first four characters and its length; of a short one the length alone.
std::wstring Masked(const std::wstring& key);

} // namespace doctor
