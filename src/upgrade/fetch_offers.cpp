#include "upgrade/fetch_offers.h"

#include "host/current_call.h"
#include "host/report_result.h"
#include "service/request_updates.h"

#include <utility>

namespace product_services {

std::vector<UpgradeOffer> FetchOffers(const ProductRecord& record)
{
    UpdateReply reply =
        RequestUpdates(record, TextOrEmpty(CurrentHostContext->apiKey), UpdateQuery::UpgradeCenter);
    switch (reply.kind) {
    case UpdateReply::Kind::Empty:
        ReportResult(PRODUCT_SERVICES_NO_UPGRADES);
        break;
    case UpdateReply::Kind::Refusal:
        ReportResult(PRODUCT_SERVICES_NO_CONNECTION);
        break;
    case UpdateReply::Kind::Offers:
        if (reply.isIncomplete) {
            ReportResult(PRODUCT_SERVICES_SERVER_UNREACHABLE);
        }
        break;
    case UpdateReply::Kind::NotSent:
    case UpdateReply::Kind::OtherStatus:
        break;
    }
    return std::move(reply.offers);
}

} // namespace product_services
