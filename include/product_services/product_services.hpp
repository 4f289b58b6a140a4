/// @file
/// The guarded calls for C++17 and later, of any compiler: what crosses the DLL's border is the C interface
/// of guarded_calls.h. All of it is in this header.
///
/// @since 1.0, all that is here.
#ifndef PRODUCT_SERVICES_PRODUCT_SERVICES_HPP
#define PRODUCT_SERVICES_PRODUCT_SERVICES_HPP

#include "product_services/guarded_calls.h"

#include <memory>
#include <optional>
#include <string>

/// The guarded calls in C++.
namespace product_services {

/// The calling product. The members mean what those of GuardedCall mean.
struct Product
{
    /// GuardedCall::productName.
    std::wstring name;
    /// GuardedCall::productVersion.
    std::wstring version;
    /// GuardedCall::apiKey.
    std::wstring apiKey;
    /// A ProductServicesLanguage.
    std::int32_t languageId = 0;
    /// The hosts that an address of the service may lead to, as GuardedCall::trustedHosts; empty for any.
    std::wstring trustedHosts;
    /// A sum of ProductServicesOption.
    std::uint32_t options = 0;
};

/// What a call reported.
struct Report
{
    /// A ProductServicesResultCode.
    std::uint32_t code = 0;
    /// Its message or, with PRODUCT_SERVICES_SUCCESS, the download address.
    std::wstring text;
};

/// What a guarded call returned.
struct CallResult
{
    /// Empty where the call had nothing to report, and where it failed.
    std::optional<Report> report;
    /// Why the call failed; empty where it did not.
    std::optional<std::wstring> error;
    /// An address that leads to none of trustedHosts: not to be opened.
    std::optional<std::wstring> untrustedAddress;
    /// What a quiet check would have told the user.
    std::optional<std::wstring> withheldMessage;
    /// How the call ended.
    ProductServicesOutcome outcome = PRODUCT_SERVICES_NOT_CALLED;
    /// Whether the text was longer than 65,535 characters and was cut.
    bool isTextCut = false;
};

/// What UseWindowsProxy found.
struct ProxyResult
{
    /// What was found.
    ProductServicesProxy found = PRODUCT_SERVICES_PROXY_FAILED;
    /// The proxy's address, or why the settings could not be read.
    std::wstring text;
};

/// What VerifyPublisher found.
struct PublisherResult
{
    /// Start the file only where this is PRODUCT_SERVICES_PUBLISHER_TRUSTED.
    ProductServicesPublisher found = PRODUCT_SERVICES_PUBLISHER_UNREADABLE;
    /// A sentence that says what was found.
    std::wstring text;
};

namespace detail {

constexpr std::uint32_t TextCapacity = 0x10000;

inline CallResult Call(std::uint32_t (*function)(GuardedCall*), const Product& product)
{
    // Not zeroed, unlike a vector.
    const std::unique_ptr<wchar_t[]> text(new wchar_t[TextCapacity]);
    text[0] = L'\0';
    GuardedCall call{};
    call.size = sizeof call;
    call.languageId = product.languageId;
    call.productName = product.name.c_str();
    call.productVersion = product.version.c_str();
    call.apiKey = product.apiKey.c_str();
    call.text = text.get();
    call.textCapacity = TextCapacity;
    call.options = product.options;
    call.trustedHosts = product.trustedHosts.empty() ? nullptr : product.trustedHosts.c_str();

    CallResult result;
    result.outcome = static_cast<ProductServicesOutcome>(function(&call));
    result.isTextCut = call.isTextCut != 0;
    switch (result.outcome) {
    case PRODUCT_SERVICES_REPORTED:
        result.report = Report{call.resultCode, text.get()};
        break;
    case PRODUCT_SERVICES_UNTRUSTED_ADDRESS:
        result.untrustedAddress = text.get();
        break;
    case PRODUCT_SERVICES_MESSAGE_WITHHELD:
        result.withheldMessage = text.get();
        break;
    case PRODUCT_SERVICES_NOTHING_REPORTED:
        break;
    default:
        result.error = text.get();
    }
    return result;
}

} // namespace detail

/// Asks whether a newer release exists.
inline CallResult CheckForUpdates(const Product& product)
{
    return detail::Call(&GuardedCheckForUpdates, product);
}

/// Shows the upgrade center.
inline CallResult Upgrade(const Product& product)
{
    return detail::Call(&GuardedUpgrade, product);
}

/// Takes over the proxy of Windows for this process; without the service's address, no script is asked.
inline ProxyResult UseWindowsProxy(const std::wstring& serviceAddress = {})
{
    wchar_t text[1024] = L"";
    const wchar_t* address = serviceAddress.empty() ? nullptr : serviceAddress.c_str();
    const auto found = static_cast<ProductServicesProxy>(::UseWindowsProxy(address, text, 1024));
    return {found, text};
}

/// Whether a downloaded file is signed by the publisher, as publisher.h says.
inline PublisherResult VerifyPublisher(const std::wstring& path, const std::wstring& publisher)
{
    wchar_t text[1024] = L"";
    const std::uint32_t found = ::VerifyPublisher(path.c_str(), publisher.c_str(), text, 1024);
    return {static_cast<ProductServicesPublisher>(found), text};
}

} // namespace product_services

#endif
