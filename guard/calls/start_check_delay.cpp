#include "calls/start_check_delay.h"

#include "platform/registry.h"

#include <functional>

namespace product_services_guard {
namespace {

constexpr std::uint32_t MaxDelayMs = 120'000;

} // namespace

// Does not use the identifier that is sent to the service, because the core stores that without a lock.
std::uint32_t ComputeStartCheckDelayMs()
{
    const auto key =
        product_services::OpenRegistryKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Cryptography");
    const auto guid = key ? product_services::ReadRegistryText(key.get(), L"MachineGuid") : std::nullopt;
    return static_cast<std::uint32_t>(std::hash<std::wstring>()(guid.value_or(L"")) % MaxDelayMs);
}

} // namespace product_services_guard
