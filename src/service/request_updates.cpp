#include "service/request_updates.h"

#include "platform/product_record.h"
#include "service/endpoints.h"
#include "service/service_client.h"
#include "service/service_reply.h"
#include "service/update_query_body.h"

namespace product_services {
namespace {

UpdateReply::Kind ClassifyReply(const std::string& replyText)
{
    if (replyText.empty()) {
        return UpdateReply::Kind::Empty;
    }
    const auto status = ReadStatus(ParseServiceReply(replyText));
    if (!status) {
        return UpdateReply::Kind::Offers;
    }
    return *status == 0 ? UpdateReply::Kind::Refusal : UpdateReply::Kind::OtherStatus;
}

void ReadOffers(UpdateReply& reply, const std::string& replyText, UpdateQuery query)
{
    try {
        // Deliberate: the text is parsed a second time, and only here are parse errors caught, although the
        // first parse has succeeded.
        ServiceReply document = ParseServiceReply(replyText);
        // Deliberate: the update check reads the first offer even of an empty list, which throws.
        const std::size_t count = query == UpdateQuery::Check ? 1 : document.size();
        for (std::size_t i = 0; i < count; ++i) {
            reply.offers.push_back(ReadOffer(document, i));
        }
    } catch (const ServiceReply::parse_error&) {
        reply.isIncomplete = true;
    }
}

} // namespace

UpdateReply RequestUpdates(const ProductRecord& record, const std::wstring& apiKey, UpdateQuery query)
{
    UpdateReply reply;
    const std::wstring productKey = record.Read(L"key");
    if (productKey.empty() || apiKey.empty()) {
        return reply;
    }
    const std::wstring queryKind = query == UpdateQuery::Check ? L"1" : L"0";
    const std::string body = BuildUpdateQuery(apiKey, productKey, record.Read(L"version"), queryKind);
    const std::string replyText = ServiceClient::Post(body, endpoints::GetUpdatesUrl);
    reply.kind = ClassifyReply(replyText);
    if (reply.kind == UpdateReply::Kind::Offers) {
        ReadOffers(reply, replyText, query);
    }
    return reply;
}

} // namespace product_services
