#include "product_call.h"

std::wstring Describe(const product_services::CallResult& result)
{
    if (result.error) {
        return L"the call ended with an error: " + *result.error;
    }
    if (result.untrustedAddress) {
        return L"not opened, since it leads to no trusted host: " + *result.untrustedAddress;
    }
    if (result.withheldMessage) {
        return L"not shown: " + *result.withheldMessage;
    }
    if (!result.report) {
        return L"nothing was reported";
    }
    if (result.report->code == PRODUCT_SERVICES_SUCCESS) {
        return L"200: a newer release is at " + result.report->text;
    }
    return std::to_wstring(result.report->code) + L": " + result.report->text;
}
