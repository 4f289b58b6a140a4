#pragma once

#include <string>
#include <windows.h>

namespace product_services {

/// Returns the background picture of the product line that `apiKey` belongs to. Null if the key is empty or
/// the picture cannot be loaded. The caller owns the picture.
HBITMAP BackgroundBitmapForProduct(const std::wstring& apiKey);

} // namespace product_services
