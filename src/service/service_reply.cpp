#include "service/service_reply.h"

#include "service/text_conversion.h"

namespace product_services {
namespace {

std::wstring ReadText(ServiceReply& element, const char* member)
{
    return ToWide(element[member].get<std::string>());
}

} // namespace

ServiceReply ParseServiceReply(const std::string& text)
{
    return ServiceReply::parse(text);
}

std::optional<std::int32_t> ReadStatus(const ServiceReply& reply)
{
    const auto status = reply.find("status");
    if (status == reply.end()) {
        return std::nullopt;
    }
    return status->get<std::int32_t>();
}

UpgradeOffer ReadOffer(ServiceReply& reply, std::size_t index)
{
    // Deliberate: the inserting operators, so that what is missing is null and raises type error 302 as a
    // text.
    ServiceReply& element = reply[index];
    UpgradeOffer offer;
    offer.name = ReadText(element, "name");
    offer.version = ReadText(element, "version");
    offer.url = ReadText(element, "url");
    return offer;
}

} // namespace product_services
