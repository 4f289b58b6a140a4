#include "upgrade/offers.h"

#include "host/current_call.h"
#include "host/report_result.h"
#include "service/update_request.h"

#include <utility>

namespace product_services {

std::vector<UpgradeOffer> FetchOffers(const ProductRecord& record)
{
    UpdateAnswer answer = RequestUpdates(record, HostText(CurrentHostContext->apiKey), UpdateQuery::Center);
    switch (answer.kind) {
    case UpdateAnswer::Kind::Empty:
        ReportResult(PRODUCT_SERVICES_NO_UPGRADES);
        break;
    case UpdateAnswer::Kind::Refusal:
        ReportResult(PRODUCT_SERVICES_NO_CONNECTION);
        break;
    case UpdateAnswer::Kind::Offers:
        if (answer.isCutShort) {
            ReportResult(PRODUCT_SERVICES_SERVER_UNREACHABLE);
        }
        break;
    case UpdateAnswer::Kind::NotAsked:
    case UpdateAnswer::Kind::OtherStatus:
        break;
    }
    return std::move(answer.offers);
}

} // namespace product_services
