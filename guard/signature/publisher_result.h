// Decides whether a signature is the expected publisher's.
#pragma once

#include "product_services/publisher.h"

#include "signature/signature.h"

#include <string>

namespace product_services_guard {

struct PublisherResult
{
    ProductServicesPublisherResult status;
    /// A sentence that says why.
    std::wstring text;
};

/// `publishers` has one name in each line. Throws std::bad_alloc.
PublisherResult EvaluateSignature(const Signature& signature, std::wstring_view publishers);

} // namespace product_services_guard
