#pragma once

namespace product_services {

class HostCallScope;

/// Shows the offers of the service and opens the chosen one's purchase address; reports 940 where the service
/// is not reachable and 950 without a stored record. Throws the JSON library's errors on a malformed reply.
void RunUpgradeCenter(HostCallScope& call);

} // namespace product_services
