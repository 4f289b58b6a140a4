#pragma once

namespace product_services {

class HostCallScope;

/// Asks the service for a newer release. Reports 200 with the download address of the first offer, or shows
/// the user a message if there is none. Reports 950 if there is no product record. Throws the JSON library's
/// exceptions if the reply is malformed.
void RunUpdateCheck(HostCallScope& call);

} // namespace product_services
