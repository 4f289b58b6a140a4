#include "url/service_endpoint.h"

#include "platform/family.h"
#include "service/text_conversion.h"
#include "url/ascii.h"

#include <curl/curl.h>
#include <memory>

namespace product_services_guard {
namespace {

struct UrlDeleter
{
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

std::wstring GetUrlPart(CURLU* url, CURLUPart part)
{
    char* text = nullptr;
    if (curl_url_get(url, part, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) {
        return {};
    }
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, curl_free);
    return product_services::ToWide(text);
}

} // namespace

std::wstring GetServiceUrl()
{
    return product_services::Family.serviceBaseAddress;
}

ServiceEndpoint GetServiceEndpoint()
{
    const std::unique_ptr<CURLU, UrlDeleter> url(curl_url());
    curl_url_set(url.get(), CURLUPART_URL, product_services::ToUtf8(GetServiceUrl()).c_str(), 0);
    std::wstring host = ToLowerAscii(GetUrlPart(url.get(), CURLUPART_HOST));
    if (host.starts_with(L'[')) {
        host = host.substr(1, host.find(L']') - 1);
    }
    return {host, GetUrlPart(url.get(), CURLUPART_PORT)};
}

} // namespace product_services_guard
