#pragma once

#include <string>
#include <windows.h>

namespace product_services {

/// The background picture of the product line that `apiKey` belongs to; null for an empty key and where the
/// picture cannot be loaded. The caller owns the picture.
HBITMAP BackgroundBitmapForProduct(const std::wstring& apiKey);

} // namespace product_services
