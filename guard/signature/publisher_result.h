// Decides whether a signature is the expected publisher's.
#pragma once

#include "product_services/publisher.h"

#include "signature/signature.h"

#include <string>

namespace product_services_guard {

struct PublisherResult
{
    ProductServicesPublisherResult status;
    /// Explains the status in a sentence.
    std::wstring text;
};

/// Compares the signer with `publishers`, which has one name in each line. Throws std::bad_alloc.
PublisherResult EvaluateSignature(const Signature& signature, std::wstring_view publishers);

} // namespace product_services_guard
