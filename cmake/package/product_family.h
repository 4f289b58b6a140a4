// What the sample host needs to know of the product family.
#pragma once

namespace product_family {

inline constexpr const wchar_t* KnownApiKeys[]{L"draft20-7k2m9q-x4v8p1w"};

} // namespace product_family
