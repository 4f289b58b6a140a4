#include "host/host_call_scope.h"

#include "update/update_check.h"

#include "host/current_call.h"
#include "service/update_request.h"
#include "text/text_ids.h"

namespace product_services {
void RunUpdateCheck(HostCallScope& call)
{
    if (!call.RequireRecord()) {
        return;
    }
    const UpdateAnswer answer =
        RequestUpdates(call.Record(), HostText(CurrentHostContext->apiKey), UpdateQuery::Check);
    switch (answer.kind) {
    case UpdateAnswer::Kind::Empty:
        CurrentEnvironment->ShowMessage(text_ids::LatestVersion);
        break;
    case UpdateAnswer::Kind::Refusal:
        CurrentEnvironment->ShowMessage(text_ids::NoInternet);
        break;
    case UpdateAnswer::Kind::Offers:
        if (!answer.offers.empty()) {
            CurrentEnvironment->WriteResult(PRODUCT_SERVICES_SUCCESS, answer.offers.front().url);
        }
        break;
    case UpdateAnswer::Kind::NotAsked:
    case UpdateAnswer::Kind::OtherStatus:
        break;
    }
}

} // namespace product_services
