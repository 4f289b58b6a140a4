// What an update check must do besides its post, done with nothing around it: the least that a check can
// cost.
#pragma once

#include "support/bench_product.h"

#include <nlohmann/json.hpp>
#include <string>
#include <windows.h>

namespace required_calls {

inline bool ReadRecord(const BenchProduct& product)
{
    static const std::wstring path = std::wstring(product_family::RecordRegistryPath) + L'\\' +
                                     product.context.productName + L'\\' + product.context.productVersion;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &key) !=
        ERROR_SUCCESS) {
        return false;
    }
    bool reads = true;
    for (const wchar_t* name : {L"key", L"version"}) {
        wchar_t text[256];
        DWORD size = sizeof text;
        reads =
            RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS && reads;
    }
    RegCloseKey(key);
    return reads;
}

inline void SetWaitCursor()
{
    SetCursor(LoadCursorW(nullptr, IDC_WAIT));
}

inline bool ParseTwice(const std::string& reply)
{
    const bool isList = nlohmann::json::parse(reply).is_array();
    return nlohmann::json::parse(reply).is_array() && isList;
}

} // namespace required_calls
