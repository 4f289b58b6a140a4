// What a signature means to who expects a publisher.
#pragma once

#include "product_services/publisher.h"

#include "signature.h"

#include <string>

namespace product_services_guard {

struct Verdict
{
    ProductServicesPublisher outcome;
    /// A sentence that says why.
    std::wstring text;
};

/// Throws std::bad_alloc.
Verdict Judge(const Signature& signature, const std::wstring& publisher);

} // namespace product_services_guard
