#pragma once

namespace product_services {

class ProductRecord;

/// Shows the offers of the service and opens the chosen one's purchase address; reports 940 where the service
/// is not reachable. Throws the JSON library's errors on a malformed reply.
void RunUpgradeCenter(const ProductRecord& record, bool isServiceReachable);

} // namespace product_services
