#pragma once

#include "service/upgrade_offer.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace product_services {

/// A parsed reply of the service, one of
///
///     {"status":0,"error":"unknown product"}                               a refusal
///     [{"name":"Example Draft","version":"2.0","url":"https://..."}, ...]  offers
///
/// Reading it throws the JSON library's own exceptions: parse error 101 if it is not JSON, type errors 302
/// and 305 if its structure is different.
using ServiceReply = nlohmann::json;

ServiceReply ParseServiceReply(const std::string& text);

/// Returns the member "status", which is 0 in a refusal. Returns nullopt if there is none: then the reply is
/// a list of offers.
std::optional<std::int32_t> ReadStatus(const ServiceReply& reply);

/// Returns the offer at `index`. Throws std::range_error("bad conversion") if a text has a character outside
/// the Basic Multilingual Plane. Inserts missing members into `reply` as null.
UpgradeOffer ReadOffer(ServiceReply& reply, std::size_t index);

} // namespace product_services
