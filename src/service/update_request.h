#pragma once

#include "service/upgrade_offer.h"

#include <string>
#include <vector>

namespace product_services {

class ProductRecord;

/// Who asks.
enum class UpdateQuery
{
    Check, ///< Whether there is a newer release: the first offer is read, and no other.
    Center ///< What is on offer: every offer is read.
};

/// What came of an update query.
struct UpdateAnswer
{
    enum class Kind
    {
        NotAsked,    ///< A key was missing.
        Empty,       ///< No answer at all.
        Refusal,     ///< A status of 0; every failed transfer too.
        OtherStatus, ///< Neither a refusal nor an offer.
        Offers       ///< No status.
    };

    Kind kind = Kind::NotAsked;
    std::vector<UpgradeOffer> offers; ///< In the order of the answer.
    bool isCutShort = false;          ///< A parse error ended the reading of the offers.
};

/// Asks the service what is newer than the installed product, and reads the answer. Throws the JSON library's
/// errors on an answer that is malformed, to the check an empty list, too; throws std::range_error("bad
/// conversion") on a character outside the basic plane.
UpdateAnswer RequestUpdates(const ProductRecord& record, const std::wstring& apiKey, UpdateQuery query);

} // namespace product_services
