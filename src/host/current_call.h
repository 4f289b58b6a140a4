#pragma once

#include "product_services/product_services.h"

#include <cstdint>
#include <string>

namespace product_services {

class CallEnvironment;
class TextTable;

/// The host's structure and the texts of the call in progress. Every call sets them and none clears them, so
/// between calls they are those of the last call.
extern HostContext* CurrentHostContext;
extern TextTable* CurrentTextTable;

/// The environment of the call in progress; between calls, `DefaultEnvironment`. Never null.
extern CallEnvironment* CurrentEnvironment;

/// Returns a text of the host's structure, or an empty text for a null pointer.
std::wstring TextOrEmpty(const wchar_t* text);

/// Returns the text of `id` in `CurrentTextTable`.
std::wstring CurrentText(std::int32_t id);

} // namespace product_services
