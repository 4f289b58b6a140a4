#include "service/service_reply.h"

#include "service/text_conversion.h"

namespace product_services {
namespace {

std::wstring ReadString(ServiceReply& element, const char* member)
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
    // Deliberate: operator[] inserts what is missing as null, which then raises type error 302 because it is
    // not a string.
    ServiceReply& element = reply[index];
    UpgradeOffer offer;
    offer.name = ReadString(element, "name");
    offer.version = ReadString(element, "version");
    offer.url = ReadString(element, "url");
    return offer;
}

} // namespace product_services
