// Limits of the transfers of a call.
#pragma once

#include <cstdint>
#include <curl/curl.h>

namespace product_services_guard {

/// The time limit of a call, whose clock runs only during transfers, and the host's cancel flag.
class TransferLimits
{
public:
    /// As in GuardedCallParams.
    TransferLimits(std::uint32_t timeLimitMs, const volatile std::uint32_t* cancelFlag);

    /// The clock starts when a transfer is prepared and stops when the transfer has ended.
    void StartClock();
    void StopClock();

    bool IsCancelled() const { return m_cancelFlag && *m_cancelFlag != 0; }
    bool IsTimeOver() const { return RemainingMs() == 0; }

    /// Returns the time that is left, or MaxRemainingMs if there is no limit.
    long RemainingMs() const;

    /// Makes libcurl end a transfer when the time is over or the host cancels.
    void Apply(CURL* handle) const;

    static constexpr long MaxRemainingMs = 0x7FFFFFFF;

private:
    std::uint64_t m_limitMs;
    const volatile std::uint32_t* m_cancelFlag;
    std::uint64_t m_usedMs = 0;
    /// Zero if the clock is not running.
    std::uint64_t m_startedAt = 0;
};

} // namespace product_services_guard
