#include "platform/product_record.h"

#include "platform/family.h"
#include "platform/registry.h"

#include <utility>

namespace product_services {
namespace {

bool IsValidKeyName(const std::wstring& name)
{
    return !name.empty() && name.find(L'\\') == name.npos;
}

} // namespace

ProductRecordLocation FindProductRecord(const std::wstring& productName, const std::wstring& productVersion)
{
    if (!IsValidKeyName(productName) || !IsValidKeyName(productVersion)) {
        return {};
    }
    const std::wstring path =
        std::wstring(Family.recordRegistryPath) + L'\\' + productName + L'\\' + productVersion;
    for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        if (OpenRegistryKey(root, path)) {
            return {root, path};
        }
    }
    return {};
}

ProductRecord::ProductRecord(ProductRecordLocation location) : m_location(std::move(location)) {}

bool ProductRecord::Load()
{
    if (m_location.IsEmpty()) {
        return false;
    }
    const RegistryKey key = OpenRegistryKey(m_location.root, m_location.path);
    if (!key) {
        return false;
    }
    m_key = ReadRegistryText(key.get(), L"key").value_or(L"");
    m_version = ReadRegistryText(key.get(), L"version").value_or(L"");
    return true;
}

std::wstring ProductRecord::Read(const std::wstring& member) const
{
    if (member == L"key") {
        return m_key;
    }
    return member == L"version" ? m_version : std::wstring();
}

} // namespace product_services
