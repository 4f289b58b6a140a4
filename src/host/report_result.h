#pragma once

#include <cstdint>

namespace product_services {

/// Reports `code` with its message to the host. The message of an unknown code is empty. Does nothing for
/// 200, because a successful update check writes its own result, with a URL instead of a message.
void ReportResult(std::uint32_t code);

} // namespace product_services
