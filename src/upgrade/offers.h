#pragma once

#include "service/upgrade_offer.h"

#include <vector>

namespace product_services {

class ProductRecord;

/// Asks the service what is on offer for the installed product, in the order of the reply. Reports 920 for an
/// empty reply, 940 for a refusal with status 0 and 504 where the list cannot be read to its end. Throws the
/// JSON library's errors on a malformed reply.
std::vector<UpgradeOffer> FetchOffers(const ProductRecord& record);

} // namespace product_services
