#include "record.h"

#include "checks.h"
#include "platform/registry.h"

#include <iterator>
#include <tuple>

namespace doctor {
namespace {

using product_services::OpenRegistryKey;
using product_services::ReadRegistryText;

bool CanNameOneKey(const std::wstring& name)
{
    return !name.empty() && name.find(L'\\') == name.npos;
}

std::wstring NameOfType(DWORD type)
{
    constexpr const wchar_t* Names[]{L"REG_NONE",   L"REG_SZ",      L"REG_EXPAND_SZ",
                                     L"REG_BINARY", L"REG_DWORD",   L"REG_DWORD_BIG_ENDIAN",
                                     L"REG_LINK",   L"REG_MULTI_SZ"};
    return type < std::size(Names) ? Names[type] : L"type " + std::to_wstring(type);
}

Member ReadMember(HKEY key, const wchar_t* name)
{
    Member member;
    if (RegQueryValueExW(key, name, nullptr, &member.type, nullptr, nullptr) == ERROR_SUCCESS) {
        member.text = ReadRegistryText(key, name).value_or(L"");
    }
    return member;
}

} // namespace

std::wstring Masked(const std::wstring& key)
{
    constexpr std::size_t Shown = 4;
    const std::wstring length = std::to_wstring(key.size()) + L" characters";
    return key.size() < 2 * Shown ? length : key.substr(0, Shown) + L"... (" + length + L")";
}

Record ReadRecord(const Patient& patient)
{
    const auto& [name, version] = std::tie(patient.product.name, patient.product.version);
    if (!CanNameOneKey(name) || !CanNameOneKey(version)) {
        return {};
    }
    const std::wstring path = patient.recordPath + L'\\' + name + L'\\' + version;
    for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        if (const auto key = OpenRegistryKey(root, path)) {
            const wchar_t* hive =
                root == HKEY_CURRENT_USER ? L"HKEY_CURRENT_USER\\" : L"HKEY_LOCAL_MACHINE\\";
            return {hive + path, ReadMember(key.get(), L"key"), ReadMember(key.get(), L"version")};
        }
    }
    return {};
}

Finding CheckApiKey(const std::wstring& apiKey)
{
    if (apiKey.empty()) {
        return {State::Wrong, L"api key", L"is empty: every call ends without a word", rows::Nothing};
    }
    return {State::Ok, L"api key", Masked(apiKey), rows::Nothing};
}

Finding CheckRecord(const Patient& patient, const Record& record)
{
    if (!record.place.empty()) {
        return {State::Ok, L"record", L"found in " + record.place, rows::NoRecord};
    }
    const auto& [name, version] = std::tie(patient.product.name, patient.product.version);
    if (!CanNameOneKey(name) || !CanNameOneKey(version)) {
        return {
            State::Wrong, L"record",
            L"a product's name or version that is empty or has a backslash never has one", rows::NoRecord};
    }
    return {
        State::Wrong, L"record",
        L"there is no " + patient.recordPath + L"\\" + name + L"\\" + version +
            L" in HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE",
        rows::NoRecord};
}

Finding CheckMember(const wchar_t* name, const Member& member)
{
    const std::wstring check = std::wstring(L"record's ") + name;
    const bool isKey = check.ends_with(L"key");
    // An empty version is sent as it is; an empty key ends the call.
    const State fault = isKey ? State::Wrong : State::Note;
    if (member.type == REG_NONE) {
        return {fault, check, L"is missing", rows::Nothing};
    }
    if (member.type != REG_SZ) {
        return {fault, check, L"is " + NameOfType(member.type) + L" and must be REG_SZ", rows::Nothing};
    }
    if (member.text.empty()) {
        return {fault, check, L"is empty", rows::Nothing};
    }
    return {State::Ok, check, L"REG_SZ, " + (isKey ? Masked(member.text) : member.text), rows::Nothing};
}

} // namespace doctor
