#include "platform/machine_identifier.h"

#include "platform/family.h"
#include "platform/registry.h"

#include <array>
#include <windows.h>

#include <bcrypt.h>

namespace product_services {
namespace {

constexpr wchar_t HashPrefix[] = L"ProductServices machine identifier\n";

// Computed once, because it does not change.
std::wstring identifier;

using Sha256Digest = std::array<unsigned char, 32>;

std::wstring QueryComputerName()
{
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
    return GetComputerNameW(name, &length) ? std::wstring(name, length) : std::wstring();
}

std::wstring MachineGuidOrName()
{
    if (const RegistryKey key = OpenRegistryKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Cryptography")) {
        if (const auto guid = ReadRegistryText(key.get(), L"MachineGuid"); guid && !guid->empty()) {
            return *guid;
        }
    }
    return QueryComputerName();
}

bool ComputeSha256(std::wstring text, Sha256Digest& digest)
{
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    if (BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0) < 0) {
        return false;
    }
    const NTSTATUS status = BCryptHash(
        algorithm, nullptr, 0, reinterpret_cast<PUCHAR>(text.data()),
        static_cast<ULONG>(text.size() * sizeof(wchar_t)), digest.data(), static_cast<ULONG>(digest.size()));
    BCryptCloseAlgorithmProvider(algorithm, 0);
    return status >= 0;
}

std::wstring ToHex(const Sha256Digest& digest)
{
    constexpr wchar_t Digits[] = L"0123456789abcdef";
    std::wstring text;
    for (const unsigned char byte : digest) {
        text += Digits[byte >> 4];
        text += Digits[byte & 0xF];
    }
    return text;
}

// The package id makes the identifier different for each maker, so that two makers cannot combine their data.
std::wstring ComputeMachineIdentifier()
{
    const std::wstring text = std::wstring(HashPrefix) + Family.packageId + L'\n' + MachineGuidOrName();
    Sha256Digest digest;
    return ComputeSha256(text, digest) ? ToHex(digest) : std::wstring();
}

} // namespace

std::wstring MachineIdentifier()
{
    if (identifier.empty()) {
        identifier = ComputeMachineIdentifier();
    }
    return identifier;
}

} // namespace product_services
