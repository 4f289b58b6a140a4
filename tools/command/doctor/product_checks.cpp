// Checks of a product's record and API key, and of the display.
#include "doctor/machine_checks.h"

#include "doctor/finding_collector.h"
#include "platform/family.h"
#include "platform/product_record.h"
#include "platform/registry.h"
#include "policy/policy.h"

namespace product_services_tool {
namespace {

RegistryValue ReadValue(HKEY key, const wchar_t* name)
{
    RegistryValue value;
    if (RegQueryValueExW(key, name, nullptr, &value.type, nullptr, nullptr) == ERROR_SUCCESS) {
        value.text = product_services::ReadRegistryText(key, name).value_or(L"");
    }
    return value;
}

// `shownText` is shown if the value is valid.
Finding CheckValue(
    const wchar_t* check, const RegistryValue& value, const std::wstring& shownText,
    const wchar_t* consequence, const wchar_t* helpAnchor)
{
    std::wstring error;
    if (value.type == REG_NONE) {
        error = L"is missing";
    } else if (value.type != REG_SZ) {
        error = L"has the type " + std::to_wstring(value.type) + L" and must be REG_SZ";
    } else if (value.text.empty()) {
        error = L"is empty";
    } else {
        return {Severity::Ok, check, shownText, helpAnchor};
    }
    return {Severity::Error, check, error + L": " + consequence, helpAnchor};
}

} // namespace

StoredRecord ReadStoredRecord(const std::wstring& product, const std::wstring& version)
{
    const auto location = product_services::FindProductRecord(product, version);
    if (location.IsEmpty()) {
        return {};
    }
    const auto key = product_services::OpenRegistryKey(location.root, location.path);
    const std::wstring hive =
        location.root == HKEY_CURRENT_USER ? L"HKEY_CURRENT_USER\\" : L"HKEY_LOCAL_MACHINE\\";
    return {hive + location.path, ReadValue(key.get(), L"key"), ReadValue(key.get(), L"version")};
}

Finding CheckRecord(const StoredRecord& record, const std::wstring& product, const std::wstring& version)
{
    if (!record.keyPath.empty()) {
        return {Severity::Ok, L"record", record.keyPath, help_anchors::NoRecord};
    }
    const std::wstring path =
        std::wstring(product_services::Family.recordRegistryPath) + L'\\' + product + L'\\' + version;
    return {
        Severity::Error, L"record", path + L" was not found in HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE",
        help_anchors::NoRecord};
}

Finding CheckRecordKey(const RegistryValue& value)
{
    return CheckValue(
        L"product key", value, MaskKey(value.text), L"a call sends nothing", help_anchors::Nothing);
}

Finding CheckRecordVersion(const RegistryValue& value)
{
    return CheckValue(
        L"stored version", value, value.text,
        L"the query has an empty version, so the service has nothing newer", help_anchors::NoUpdate);
}

Finding CheckApiKey(const std::wstring& apiKey)
{
    if (apiKey.empty()) {
        return {Severity::Error, L"API key", L"is empty: a call sends nothing", help_anchors::Nothing};
    }
    return {Severity::Ok, L"API key", MaskKey(apiKey), help_anchors::Nothing};
}

Policy GetPolicy()
{
    return {
        product_services_guard::IsDisabledByPolicy(PRODUCT_SERVICES_DISABLED_CHECK_FOR_UPDATES),
        product_services_guard::IsDisabledByPolicy(PRODUCT_SERVICES_DISABLED_UPGRADE)};
}

Finding CheckPolicy(const Policy& policy)
{
    Finding finding{
        Severity::Ok, L"policy", product_services::Family.policyRegistryPath, help_anchors::Nothing};
    if (!policy.disablesCheck && !policy.disablesUpgrade) {
        finding.message += L" disables nothing";
        return finding;
    }
    finding.severity = Severity::Warning;
    if (!policy.disablesUpgrade) {
        finding.message += L" disables update checks";
    } else {
        finding.message += policy.disablesCheck ? L" disables update checks and the upgrade center"
                                                : L" disables the upgrade center";
    }
    return finding;
}

int GetDisplayScaling()
{
    // This program's manifest makes it DPI-aware, so Windows reports the real resolution.
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi * 100 / USER_DEFAULT_SCREEN_DPI;
}

Finding CheckDisplayScaling(int percent)
{
    Finding finding{
        Severity::Ok, L"display scaling", std::to_wstring(percent) + L" %", help_anchors::Appearance};
    if (percent > 100) {
        finding.severity = Severity::Warning;
        finding.message +=
            L": Windows scales up the upgrade center in guarded calls; in direct calls and with the host's "
            L"DPI awareness, its picture is not scaled";
    }
    return finding;
}

} // namespace product_services_tool
