#include "upgrade/offers.h"

#include "host/current_call.h"
#include "host/report_result.h"
#include "service/update_request.h"

namespace product_services {
namespace {

std::vector<UpgradeOffer> ReadEveryOffer(const UpdateAnswer& answer)
{
    std::vector<UpgradeOffer> offers;
    const auto readAll = [&](ServiceReply& reply) {
        const std::size_t count = reply.size();
        for (std::size_t i = 0; i < count; ++i) {
            offers.push_back(ReadOffer(reply, i));
        }
    };
    if (!ReadOffers(answer, readAll)) {
        ReportResult(PRODUCT_SERVICES_SERVER_UNREACHABLE);
    }
    return offers;
}

} // namespace

std::vector<UpgradeOffer> FetchOffers(const ProductRecord& record)
{
    const auto answer = RequestUpdates(record, HostText(CurrentHostContext->apiKey), L"0");
    switch (answer.kind) {
    case UpdateAnswer::Kind::Empty:
        ReportResult(PRODUCT_SERVICES_NO_UPGRADES);
        break;
    case UpdateAnswer::Kind::Refusal:
        ReportResult(PRODUCT_SERVICES_NO_CONNECTION);
        break;
    case UpdateAnswer::Kind::Offers:
        return ReadEveryOffer(answer);
    case UpdateAnswer::Kind::NotAsked:
    case UpdateAnswer::Kind::OtherStatus:
        break;
    }
    return {};
}

} // namespace product_services
