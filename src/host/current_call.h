#pragma once

#include "product_services/product_services.h"

#include <string>

namespace product_services {

class TextTable;

/// The host's record and the texts of the call in progress, which everything that runs during a call reads.
/// Set by every call and never cleared: between calls they are those of the last one.
extern HostContext* CurrentHostContext;
extern TextTable* CurrentTextTable;

/// A text of the host's record; empty for a null one.
std::wstring HostText(const wchar_t* text);

/// The text of `id` in `CurrentTextTable`.
std::wstring CurrentText(std::int32_t id);

/// Writes to the host's record. The text is copied without a bound; a null buffer takes none.
void WriteResult(std::uint32_t resultCode, const std::wstring& text);

} // namespace product_services
