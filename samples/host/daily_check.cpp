#include "daily_check.h"

#include "sample_product.h"

#include <product_services/product_services.hpp>

#include <chrono>
#include <cstdint>
#include <windows.h>

namespace {

constexpr wchar_t LastCheck[] = L"LastCheck";

std::int64_t HoursNow()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::hours>(now).count();
}

// A clock that was set back does not keep the host from checking.
bool WasCheckedToday()
{
    std::int64_t hours = 0;
    DWORD size = sizeof hours;
    const bool isRemembered = RegGetValueW(
                                  HKEY_CURRENT_USER, SAMPLE_PRODUCT_SETTINGS_PATH, LastCheck,
                                  RRF_RT_REG_QWORD, nullptr, &hours, &size) == ERROR_SUCCESS;
    const std::int64_t passed = HoursNow() - hours;
    return isRemembered && passed >= 0 && passed < 24;
}

} // namespace

bool WaitForDailyCheck(const std::stop_token& stopToken)
{
    return !WasCheckedToday() && product_services::WaitForStartCheck(stopToken);
}

void RememberDailyCheck()
{
    const std::int64_t hours = HoursNow();
    RegSetKeyValueW(
        HKEY_CURRENT_USER, SAMPLE_PRODUCT_SETTINGS_PATH, LastCheck, REG_QWORD, &hours, sizeof hours);
}
