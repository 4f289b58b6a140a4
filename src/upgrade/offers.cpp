#include "upgrade/offers.h"

#include "host/current_call.h"
#include "host/report_result.h"
#include "platform/product_record.h"
#include "service/endpoints.h"
#include "service/service_client.h"
#include "service/update_query.h"

namespace product_services {
namespace {

std::vector<UpgradeOffer> ReadOffers(const std::string& replyText)
{
    std::vector<UpgradeOffer> offers;
    try {
        // Meant: a second parse of the same text, whose guard can never fire after the first one.
        ServiceReply reply = ParseServiceReply(replyText);
        const std::size_t count = reply.size();
        for (std::size_t i = 0; i < count; ++i) {
            offers.push_back(ReadOffer(reply, i));
        }
    } catch (const ServiceReply::parse_error&) {
        ReportResult(PRODUCT_SERVICES_SERVER_UNREACHABLE);
    }
    return offers;
}

std::vector<UpgradeOffer> HandleReply(const std::string& replyText)
{
    if (replyText.empty()) {
        ReportResult(PRODUCT_SERVICES_NO_UPGRADES);
        return {};
    }
    const auto status = ReadStatus(ParseServiceReply(replyText));
    if (!status) {
        return ReadOffers(replyText);
    }
    if (*status == 0) {
        ReportResult(PRODUCT_SERVICES_NO_CONNECTION);
    }
    return {};
}

} // namespace

std::vector<UpgradeOffer> FetchOffers(const ProductRecord& record)
{
    const std::wstring productKey = record.Read(L"key");
    const std::wstring apiKey = HostText(CurrentHostContext->apiKey);
    if (productKey.empty() || apiKey.empty()) {
        return {};
    }
    const std::string query = BuildUpdateQuery(apiKey, productKey, record.Read(L"version"), L"0");
    return HandleReply(ServiceClient::Post(query, endpoints::GetUpdates));
}

} // namespace product_services
