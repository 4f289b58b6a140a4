#pragma once

namespace product_services {

class ProductRecord;

/// Asks the service for a newer release. Reports 200 and the download address of the first offer, or tells
/// the user that there is none. Throws the JSON library's errors on a malformed reply.
void RunUpdateCheck(const ProductRecord& record);

} // namespace product_services
