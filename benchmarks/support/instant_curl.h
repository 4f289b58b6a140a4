// Stands in for libcurl at link time: answers a post at once.
#pragma once

#include <string>

namespace instant_curl {

/// Answers every post with `offers` offers from now on, and the connectivity probe with "1".
void OfferProducts(int offers);

/// The reply that holds the offers.
const std::string& OffersReply();

/// When the last reply had arrived: its write function had returned.
double LastArrival();

/// The name of an offer; each has the version "2026.2".
std::string OfferName(int index);

} // namespace instant_curl
