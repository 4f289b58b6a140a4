#include "calls/transfer_limits.h"

#include "product_services/guarded_calls.h"

#include <algorithm>
#include <windows.h>

namespace product_services_guard {
namespace {

constexpr std::uint32_t DefaultTimeLimitMs = 30'000;

// libcurl calls this several times a second. Any value but 0 ends the transfer.
int OnProgress(void* limits, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    const auto& current = *static_cast<const TransferLimits*>(limits);
    return current.IsCancelled() || current.IsTimeOver() ? 1 : 0;
}

} // namespace

TransferLimits::TransferLimits(std::uint32_t timeLimitMs, const volatile std::uint32_t* cancelFlag)
    : m_limitMs(timeLimitMs == 0 ? DefaultTimeLimitMs : timeLimitMs), m_cancelFlag(cancelFlag)
{
}

void TransferLimits::StartClock()
{
    m_startedAt = GetTickCount64();
}

void TransferLimits::StopClock()
{
    m_usedMs += GetTickCount64() - m_startedAt;
    m_startedAt = 0;
}

long TransferLimits::RemainingMs() const
{
    if (m_limitMs == PRODUCT_SERVICES_NO_TIME_LIMIT) {
        return MaxRemainingMs;
    }
    const std::uint64_t usedMs = m_usedMs + (m_startedAt != 0 ? GetTickCount64() - m_startedAt : 0);
    const std::uint64_t remainingMs = usedMs < m_limitMs ? m_limitMs - usedMs : 0;
    return static_cast<long>(std::min<std::uint64_t>(remainingMs, MaxRemainingMs));
}

void TransferLimits::Apply(CURL* handle) const
{
    if (m_limitMs != PRODUCT_SERVICES_NO_TIME_LIMIT) {
        // 0 would mean no limit.
        curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, std::max(RemainingMs(), 1L));
    }
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, OnProgress);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, this);
}

} // namespace product_services_guard
