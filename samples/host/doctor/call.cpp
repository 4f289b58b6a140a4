#include "checks.h"
#include "loaded_guard.h"
#include "product_call.h"
#include "within_time.h"

namespace doctor {
namespace {

using std::chrono::seconds;

// The library itself sets none.
constexpr seconds CallLimit{20};

Finding Say(State state, const std::wstring& sentence, const wchar_t* row)
{
    return {state, L"quiet check", sentence, row};
}

} // namespace

Finding CheckCall(product_services::Product product, bool isServiceHanging)
{
    if (!GuardFailure().empty()) {
        return Say(State::Note, L"left out: " + GuardFailure(), rows::Exception);
    }
    if (isServiceHanging) {
        return Say(State::Note, L"left out: a call waits for the service without a limit", rows::Hanging);
    }
    product.options = PRODUCT_SERVICES_QUIET;
    const auto result = WithinTime(CallLimit, [=] { return product_services::CheckForUpdates(product); });
    if (!result) {
        return Say(State::Wrong, L"the library has not answered within " + InWords(CallLimit), rows::Hanging);
    }
    const std::wstring outcome = Describe(*result);
    switch (result->outcome) {
    case PRODUCT_SERVICES_REPORTED:
        return result->report->code == PRODUCT_SERVICES_SUCCESS ? Say(State::Ok, outcome, rows::Code)
                                                                : Say(State::Wrong, outcome, rows::NoRecord);
    case PRODUCT_SERVICES_MESSAGE_WITHHELD:
        // The text may be in any language; the line of the query says which of the two boxes it is.
        return Say(State::Note, outcome, rows::Box);
    case PRODUCT_SERVICES_NOTHING_REPORTED:
        return Say(State::Wrong, outcome, rows::Nothing);
    case PRODUCT_SERVICES_UNTRUSTED_ADDRESS:
        return Say(State::Wrong, outcome, rows::Code);
    default:
        return Say(State::Wrong, outcome, rows::Exception);
    }
}

} // namespace doctor
