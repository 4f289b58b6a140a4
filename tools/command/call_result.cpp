#include "call_result.h"

#include "calls/text_copy.h"
#include "text.h"

#include <nlohmann/json.hpp>

namespace product_services_tool {
namespace {

struct OutcomeName
{
    ProductServicesOutcome outcome;
    const wchar_t* name;
};

#define OUTCOME_NAME(name)                                                                                   \
    {                                                                                                        \
        PRODUCT_SERVICES_OUTCOME_##name, L## #name                                                           \
    }

constexpr OutcomeName OutcomeNames[]{
    OUTCOME_NAME(FAILED),
    OUTCOME_NAME(NEWER_RELEASE),
    OUTCOME_NAME(UP_TO_DATE),
    OUTCOME_NAME(BROWSER_OPENED),
    OUTCOME_NAME(USER_QUIT),
    OUTCOME_NAME(NO_PRODUCT_RECORD),
    OUTCOME_NAME(NOTHING_SENT),
    OUTCOME_NAME(REFUSED),
    OUTCOME_NAME(OTHER_STATUS),
    OUTCOME_NAME(UNREACHABLE),
    OUTCOME_NAME(TIMED_OUT),
    OUTCOME_NAME(CANCELLED),
    OUTCOME_NAME(UNTRUSTED_CERTIFICATE),
    OUTCOME_NAME(UNTRUSTED_ADDRESS),
    OUTCOME_NAME(INVALID_REPLY),
    OUTCOME_NAME(BUSY),
    OUTCOME_NAME(INVALID_PARAMETER),
    OUTCOME_NAME(DISABLED_BY_POLICY)};

} // namespace

std::wstring ToString(ProductServicesOutcome outcome)
{
    for (const OutcomeName& entry : OutcomeNames) {
        if (entry.outcome == outcome) {
            return entry.name;
        }
    }
    return L"FAILED";
}

bool IsAnswered(ProductServicesOutcome outcome)
{
    switch (outcome) {
    case PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE:
    case PRODUCT_SERVICES_OUTCOME_UP_TO_DATE:
    case PRODUCT_SERVICES_OUTCOME_BROWSER_OPENED:
    case PRODUCT_SERVICES_OUTCOME_USER_QUIT:
        return true;
    default:
        return false;
    }
}

std::wstring ToLine(const CallResult& result)
{
    const std::wstring name = ToString(result.outcome);
    return result.text.empty() ? name : name + L": " + ToOneLine(result.text);
}

std::wstring ToJson(const CallResult& result)
{
    nlohmann::ordered_json json;
    json["outcome"] = ToUtf8(ToString(result.outcome));
    json["code"] = nullptr;
    if (result.code != PRODUCT_SERVICES_NO_RESULT) {
        json["code"] = result.code;
    }
    json["text"] = ToUtf8(result.text);
    return product_services_guard::FromUtf8(json.dump());
}

} // namespace product_services_tool
