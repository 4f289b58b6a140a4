#pragma once

namespace product_services {

class HostCallScope;

/// Asks the service for a newer release. Reports 200 and the download address of the first offer, or tells
/// the user that there is none; reports 950 without a stored record. Throws the JSON library's errors on a
/// malformed reply.
void RunUpdateCheck(HostCallScope& call);

} // namespace product_services
