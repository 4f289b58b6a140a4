#include "service/update_request.h"

#include "platform/product_record.h"
#include "service/endpoints.h"
#include "service/service_client.h"
#include "service/update_query.h"

#include <utility>

namespace product_services {
namespace {

UpdateAnswer::Kind KindOf(const std::string& replyText)
{
    if (replyText.empty()) {
        return UpdateAnswer::Kind::Empty;
    }
    const auto status = ReadStatus(ParseServiceReply(replyText));
    if (!status) {
        return UpdateAnswer::Kind::Offers;
    }
    return *status == 0 ? UpdateAnswer::Kind::Refusal : UpdateAnswer::Kind::OtherStatus;
}

} // namespace

UpdateAnswer RequestUpdates(const ProductRecord& record, const std::wstring& apiKey, const std::wstring& up)
{
    const std::wstring productKey = record.Read(L"key");
    if (productKey.empty() || apiKey.empty()) {
        return {UpdateAnswer::Kind::NotAsked, {}};
    }
    const std::string query = BuildUpdateQuery(apiKey, productKey, record.Read(L"version"), up);
    std::string text = ServiceClient::Post(query, endpoints::GetUpdates);
    const UpdateAnswer::Kind kind = KindOf(text);
    return {kind, std::move(text)};
}

bool ReadOffers(const UpdateAnswer& answer, const std::function<void(ServiceReply&)>& read)
{
    try {
        // Deliberate: a second parse of the same text, guarded though the first one has succeeded.
        ServiceReply reply = ParseServiceReply(answer.text);
        read(reply);
        return true;
    } catch (const ServiceReply::parse_error&) {
        return false;
    }
}

} // namespace product_services
