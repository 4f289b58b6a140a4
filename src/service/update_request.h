#pragma once

#include "service/service_reply.h"

#include <functional>
#include <string>

namespace product_services {

class ProductRecord;

/// What came of an update query.
struct UpdateAnswer
{
    enum class Kind
    {
        NotAsked,    ///< A key was missing.
        Empty,       ///< No answer at all.
        Refusal,     ///< A status of 0; every failed transfer too.
        OtherStatus, ///< Neither a refusal nor an offer.
        Offers       ///< No status: to be read with `ReadOffers`.
    };

    Kind kind;
    std::string text;
};

/// Asks the service what is newer than the installed product: builds the query of kind `up`, posts it, and
/// reads what kind of answer came. Throws the JSON library's errors on an answer that is malformed.
UpdateAnswer RequestUpdates(const ProductRecord& record, const std::wstring& apiKey, const std::wstring& up);

/// Gives the document of an answer with offers to `read`. False where a parse error ended that.
bool ReadOffers(const UpdateAnswer& answer, const std::function<void(ServiceReply&)>& read);

} // namespace product_services
