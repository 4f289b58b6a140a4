// The versions of DLLs and of this program.
#pragma once

#include "product_services/version.h"

#include <array>
#include <string>

namespace product_services_tool {

/// Major, minor, patch.
using FileVersion = std::array<unsigned, 3>;

/// The version of this program.
inline constexpr FileVersion ProductVersion{
    PRODUCT_SERVICES_VERSION_MAJOR, PRODUCT_SERVICES_VERSION_MINOR, PRODUCT_SERVICES_VERSION_PATCH};

inline std::wstring ToString(const FileVersion& version)
{
    return std::to_wstring(version[0]) + L'.' + std::to_wstring(version[1]) + L'.' +
           std::to_wstring(version[2]);
}

} // namespace product_services_tool
