#include "host/host_call_scope.h"

#include "update/update_check.h"

#include "host/current_call.h"
#include "service/request_updates.h"
#include "text/text_ids.h"

namespace product_services {

void RunUpdateCheck(HostCallScope& call)
{
    if (!call.RequireRecord()) {
        return;
    }
    const UpdateReply reply =
        RequestUpdates(call.Record(), TextOrEmpty(CurrentHostContext->apiKey), UpdateQuery::Check);
    switch (reply.kind) {
    case UpdateReply::Kind::Empty:
        CurrentEnvironment->ShowMessage(text_ids::LatestVersion);
        break;
    case UpdateReply::Kind::Refusal:
        CurrentEnvironment->ShowMessage(text_ids::NoInternet);
        break;
    case UpdateReply::Kind::Offers:
        if (!reply.offers.empty()) {
            CurrentEnvironment->WriteResult(PRODUCT_SERVICES_SUCCESS, reply.offers.front().url);
        }
        break;
    case UpdateReply::Kind::NotSent:
    case UpdateReply::Kind::OtherStatus:
        break;
    }
}

} // namespace product_services
