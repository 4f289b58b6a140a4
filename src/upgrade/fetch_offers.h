#pragma once

#include "service/upgrade_offer.h"

#include <vector>

namespace product_services {

class ProductRecord;

/// Queries the service for the products on offer, and returns them in the order of the reply. Reports 920 for
/// an empty reply, 940 for a refusal with status 0, and 504 if a parse error occurs while the offers are
/// read. Throws the JSON library's exceptions if the reply is malformed.
std::vector<UpgradeOffer> FetchOffers(const ProductRecord& record);

} // namespace product_services
