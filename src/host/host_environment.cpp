#include "host/host_environment.h"

#include "host/current_call.h"

#include <windows.h>

#include <shellapi.h>
#include <shlwapi.h>

namespace product_services {

constinit HostEnvironment DefaultEnvironment;

// Deliberate: the text is copied without a length check. Nothing is copied if the buffer is null.
void HostEnvironment::WriteResult(std::uint32_t resultCode, const std::wstring& text)
{
    CurrentHostContext->resultCode = resultCode;
    if (CurrentHostContext->resultText) {
        StrCpyW(CurrentHostContext->resultText, text.c_str());
    }
}

// Deliberate: every message box has the error icon, even the one for good news (id 74).
void HostEnvironment::ShowMessage(TextId id)
{
    const std::wstring caption = TextOrEmpty(CurrentHostContext->productName);
    MessageBoxW(nullptr, CurrentText(id).c_str(), caption.c_str(), MB_OK | MB_ICONERROR);
}

void HostEnvironment::OpenUrl(const std::wstring& url)
{
    ShellExecuteW(nullptr, nullptr, url.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

void HostEnvironment::ShowWaitCursor()
{
    SetCursor(LoadCursorW(nullptr, IDC_WAIT));
}

void HostEnvironment::PrepareTransfer(CURL*) {}

void HostEnvironment::OnTransferDone(CURL*, CURLcode, const std::string&) {}

} // namespace product_services
