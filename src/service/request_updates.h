#pragma once

#include "service/upgrade_offer.h"

#include <string>
#include <vector>

namespace product_services {

class ProductRecord;

/// The two kinds of update query.
enum class UpdateQuery
{
    Check,        ///< The update check asks for a newer release. Only the first offer is read.
    UpgradeCenter ///< The upgrade center asks for products on sale. Every offer is read.
};

/// The reply to an update query.
struct UpdateReply
{
    enum class Kind
    {
        NotSent,     ///< The query was not sent, because a key is empty.
        Empty,       ///< The reply is empty.
        Refusal,     ///< The status is 0. This includes every failed transfer.
        OtherStatus, ///< There is a status, and it is not 0.
        Offers       ///< There is no status.
    };

    Kind kind = Kind::NotSent;
    std::vector<UpgradeOffer> offers; ///< In the order of the reply.
    bool isIncomplete = false;        ///< A parse error occurred while the offers were read.
};

/// Queries the service for anything newer than the installed product, and reads the reply. Throws the JSON
/// library's exceptions if the reply is malformed, which for the update check includes an empty list. Throws
/// std::range_error("bad conversion") if a text has a character outside the Basic Multilingual Plane.
UpdateReply RequestUpdates(const ProductRecord& record, const std::wstring& apiKey, UpdateQuery query);

} // namespace product_services
