#pragma once

#include "platform/product_record.h"

#include <string>

namespace product_services {

/// The record of this process. The first call chooses its product; later calls get the same record, whatever
/// product they name. Owned by the library.
ProductRecord& SelectProductRecord(const std::wstring& productName, const std::wstring& productVersion);

/// Reads the record anew, up to five times with a pause of 150 ms after every failed attempt; false where all
/// have failed.
bool LoadProductRecord(ProductRecord& record);

} // namespace product_services
