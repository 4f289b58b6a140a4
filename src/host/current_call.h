#pragma once

#include "product_services/product_services.h"

#include <cstdint>
#include <string>

namespace product_services {

class CallEnvironment;
class TextTable;

/// The host's structure and the texts of the call in progress, which everything that runs during a call
/// reads. Set by every call and never cleared: between calls they are those of the last one.
extern HostContext* CurrentHostContext;
extern TextTable* CurrentTextTable;

/// The environment of the call in progress; between calls that of the exports. Never null.
extern CallEnvironment* CurrentEnvironment;

/// A text of the host's structure; empty for a null one.
std::wstring HostText(const wchar_t* text);

/// The text of `id` in `CurrentTextTable`.
std::wstring CurrentText(std::int32_t id);

} // namespace product_services
