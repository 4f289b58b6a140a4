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
/// Reading it throws the JSON library's own errors: parse error 101 for what is not JSON, type errors 302
/// and 305 for what has another shape.
using ServiceReply = nlohmann::json;

ServiceReply ParseServiceReply(const std::string& text);

/// The member "status" of a refusal, where 0 declines; nothing for a reply without one, which is an offer.
std::optional<std::int32_t> ReadStatus(const ServiceReply& reply);

/// The offer at `index`. Throws std::range_error("bad conversion") on a character outside the basic plane.
/// `reply` grows by what is missing in it.
UpgradeOffer ReadOffer(ServiceReply& reply, std::size_t index);

} // namespace product_services
