#include "host/report_result.h"

#include "host/call_environment.h"
#include "host/current_call.h"
#include "text/text_ids.h"

#include <optional>

namespace product_services {
namespace {

std::optional<TextId> MessageTextId(std::uint32_t code)
{
    switch (code) {
    case PRODUCT_SERVICES_REFUSED:
        return text_ids::UnstableConnection;
    case PRODUCT_SERVICES_UNKNOWN_ERROR:
        return text_ids::UnknownError;
    case PRODUCT_SERVICES_NO_INTERNET:
        return text_ids::NoInternet;
    case PRODUCT_SERVICES_SERVER_UNREACHABLE:
        return text_ids::ServerUnreachable;
    case PRODUCT_SERVICES_USER_QUIT:
        return text_ids::UserQuit;
    case PRODUCT_SERVICES_NO_UPGRADES:
        return text_ids::NoUpgrades;
    case PRODUCT_SERVICES_BROWSER_OPENED:
        return text_ids::BrowserOpened;
    case PRODUCT_SERVICES_NO_CONNECTION:
        return text_ids::NoConnection;
    case PRODUCT_SERVICES_NO_PRODUCT_RECORD:
        return text_ids::NoProductRecord;
    default:
        return std::nullopt;
    }
}

} // namespace

void ReportResult(std::uint32_t code)
{
    if (code == PRODUCT_SERVICES_SUCCESS) {
        return;
    }
    const std::optional<TextId> id = MessageTextId(code);
    CurrentEnvironment->WriteResult(code, id ? CurrentText(*id) : std::wstring());
}

} // namespace product_services
