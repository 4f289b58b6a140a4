#pragma once

#include "host/call_environment.h"

#include <cstdint>

namespace product_services {

/// The environment of the two exports. It writes into the host's structure, shows message boxes, opens URLs
/// through the shell, and adds no options to a transfer.
class HostEnvironment : public CallEnvironment
{
public:
    void WriteResult(std::uint32_t resultCode, const std::wstring& text) override;
    void ShowMessage(TextId id) override;
    void OpenUrl(const std::wstring& url) override;
    void ShowWaitCursor() override;
    void PrepareTransfer(CURL* handle) override;
    void OnTransferDone(CURL* handle, CURLcode result, const std::string& reply) override;
};

extern HostEnvironment DefaultEnvironment;

} // namespace product_services
