#include "policy/policy.h"

#include "platform/family.h"
#include "platform/registry.h"

namespace product_services_guard {

bool IsDisabledByPolicy(ProductServicesDisabledCalls call)
{
    const wchar_t* const name =
        call == PRODUCT_SERVICES_DISABLED_UPGRADE ? L"DisableUpgradeCenter" : L"DisableUpdateCheck";
    for (HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        const auto key = product_services::OpenRegistryKey(root, product_services::Family.policyRegistryPath);
        DWORD value = 0;
        DWORD size = sizeof value;
        if (key && RegGetValueW(key.get(), nullptr, name, RRF_RT_REG_DWORD, nullptr, &value, &size) ==
                       ERROR_SUCCESS) {
            return value == 1;
        }
    }
    return false;
}

} // namespace product_services_guard
