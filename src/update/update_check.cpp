#include "update/update_check.h"

#include "host/current_call.h"
#include "platform/product_record.h"
#include "service/endpoints.h"
#include "service/service_client.h"
#include "service/service_reply.h"
#include "service/update_query.h"
#include "text/text_ids.h"

#include <windows.h>

namespace product_services {
namespace {

void ShowMessage(TextId id)
{
    // Meant: the error icon, for the good news of id 74 too.
    MessageBoxW(
        nullptr, CurrentText(id).c_str(), HostText(CurrentHostContext->productName).c_str(),
        MB_OK | MB_ICONERROR);
}

void ReportFirstOffer(const std::string& replyText)
{
    try {
        // Meant: a second parse of the same text, guarded though the first one has succeeded.
        ServiceReply reply = ParseServiceReply(replyText);
        const UpgradeOffer offer = ReadOffer(reply, 0);
        WriteResult(PRODUCT_SERVICES_SUCCESS, offer.url);
    } catch (const ServiceReply::parse_error&) {
    }
}

void HandleReply(const std::string& replyText)
{
    if (replyText.empty()) {
        ShowMessage(text_ids::LatestVersion);
        return;
    }
    const auto status = ReadStatus(ParseServiceReply(replyText));
    if (!status) {
        ReportFirstOffer(replyText);
    } else if (*status == 0) {
        ShowMessage(text_ids::NoInternet);
    }
}

} // namespace

void RunUpdateCheck(const ProductRecord& record)
{
    const std::wstring productKey = record.Read(L"key");
    const std::wstring apiKey = HostText(CurrentHostContext->apiKey);
    if (productKey.empty() || apiKey.empty()) {
        return;
    }
    const std::string query = BuildUpdateQuery(apiKey, productKey, record.Read(L"version"), L"1");
    HandleReply(ServiceClient::Post(query, endpoints::GetUpdates));
}

} // namespace product_services
