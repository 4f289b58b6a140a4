#pragma once

#include <cstdint>

namespace product_services {

/// Writes `code` and its message into the host's record; an unknown code has an empty message. Does nothing
/// for 200, whose text is no message: a call that succeeds writes its own result.
void ReportResult(std::uint32_t code);

} // namespace product_services
