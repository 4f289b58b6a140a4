#pragma once

#include <string>

namespace product_services {

/// One product on offer.
struct UpgradeOffer
{
    std::wstring name;
    std::wstring version;
    std::wstring url;
};

} // namespace product_services
