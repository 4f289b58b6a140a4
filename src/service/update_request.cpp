#include "service/update_request.h"

#include "platform/product_record.h"
#include "service/endpoints.h"
#include "service/service_client.h"
#include "service/service_reply.h"
#include "service/update_query.h"

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

void ReadOffers(UpdateAnswer& answer, const std::string& replyText, UpdateQuery query)
{
    try {
        // Deliberate: a second parse of the same text, guarded though the first one has succeeded.
        ServiceReply reply = ParseServiceReply(replyText);
        // Deliberate: the check reads the first offer of an empty list too, which is an error.
        const std::size_t count = query == UpdateQuery::Check ? 1 : reply.size();
        for (std::size_t i = 0; i < count; ++i) {
            answer.offers.push_back(ReadOffer(reply, i));
        }
    } catch (const ServiceReply::parse_error&) {
        answer.isCutShort = true;
    }
}

} // namespace

UpdateAnswer RequestUpdates(const ProductRecord& record, const std::wstring& apiKey, UpdateQuery query)
{
    UpdateAnswer answer;
    const std::wstring productKey = record.Read(L"key");
    if (productKey.empty() || apiKey.empty()) {
        return answer;
    }
    const std::wstring up = query == UpdateQuery::Check ? L"1" : L"0";
    const std::string body = BuildUpdateQuery(apiKey, productKey, record.Read(L"version"), up);
    const std::string replyText = ServiceClient::Post(body, endpoints::GetUpdates);
    answer.kind = KindOf(replyText);
    if (answer.kind == UpdateAnswer::Kind::Offers) {
        ReadOffers(answer, replyText, query);
    }
    return answer;
}

} // namespace product_services
