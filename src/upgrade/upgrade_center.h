#pragma once

namespace product_services {

class HostCallScope;

/// Shows the service's offers and opens the purchase address of the chosen one. Reports 940 if the service
/// cannot be reached, and 950 if there is no product record. Throws the JSON library's exceptions if a reply
/// is malformed.
void RunUpgradeCenter(HostCallScope& call);

} // namespace product_services
