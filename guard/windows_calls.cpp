#include "windows_calls.h"

#include "bounded_text.h"
#include "import_hook.h"
#include "text_room.h"
#include "trusted_hosts.h"
#include "windows_address.h"

#include <iterator>

#include <shellapi.h>

namespace product_services_guard {
namespace {

// As many units as the longest address has, a NUL with them: libcurl hands over 16,384 bytes at a time.
constexpr std::size_t AddressRoom = 0x4001;

// Those of the call in progress.
Wishes* inForce = nullptr;

constinit ImportHook messageBox;
constinit ImportHook shellExecute;

template <typename Function>
Function* Former(const ImportHook& hook)
{
    return reinterpret_cast<Function*>(hook.Former());
}

int WINAPI ShowOrKeepMessage(HWND owner, const wchar_t* text, const wchar_t* caption, UINT flags)
{
    if (!inForce || !inForce->isQuiet) {
        return Former<decltype(MessageBoxW)>(messageBox)(owner, text, caption, flags);
    }
    CopyBounded(inForce->room, LeastRoom, text);
    inForce->isMessageKept = true;
    return IDOK;
}

HINSTANCE WINAPI OpenTrusted(
    HWND owner, const wchar_t* verb, const wchar_t* file, const wchar_t* parameters, const wchar_t* folder,
    int show)
{
    if (!inForce || !inForce->trustedHosts || IsTrusted(file, inForce->trustedHosts)) {
        return Former<decltype(ShellExecuteW)>(shellExecute)(owner, verb, file, parameters, folder, show);
    }
    static wchar_t address[AddressRoom];
    CopyBounded(address, AddressRoom, file);
    inForce->refusedAddress = address;
    return reinterpret_cast<HINSTANCE>(INT_PTR{SE_ERR_ACCESSDENIED});
}

} // namespace

bool ComeBetween(HMODULE productServices)
{
    return messageBox.Install(productServices, "MessageBoxW", reinterpret_cast<void*>(&ShowOrKeepMessage)) &&
           shellExecute.Install(productServices, "ShellExecuteW", reinterpret_cast<void*>(&OpenTrusted));
}

WishesInForce::WishesInForce(Wishes& wishes)
{
    inForce = &wishes;
}

WishesInForce::~WishesInForce()
{
    inForce = nullptr;
}

bool IsTrusted(const wchar_t* address, const wchar_t* trustedHosts)
{
    return IsTrustedAddress(address, trustedHosts) && IsReadAlikeByWindows(address);
}

} // namespace product_services_guard
