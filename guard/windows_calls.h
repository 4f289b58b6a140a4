// Two functions of Windows as ProductServices.dll calls them: a message box, and the shell that opens an
// address.
#pragma once

#include <windows.h>

namespace product_services_guard {

/// What a guarded call wants of the two while it runs, and what came of it.
struct Wishes
{
    /// Messages are kept instead of shown.
    bool isQuiet = false;
    /// Where addresses may lead; null for anywhere.
    const wchar_t* trustedHosts = nullptr;
    /// Room for a message that is kept, of LeastRoom units.
    wchar_t* room = nullptr;

    bool isMessageKept = false;
    /// The address that was not opened; null where there was none.
    const wchar_t* refusedAddress = nullptr;
};

/// Comes between a loaded ProductServices.dll and the two, until this DLL is unloaded. False where the DLL
/// does not import them.
bool ComeBetween(HMODULE productServices);

/// While it lives, the two do what `wishes` asks; they do what Windows does before and after.
class WishesInForce
{
public:
    explicit WishesInForce(Wishes& wishes);
    ~WishesInForce();

    WishesInForce(const WishesInForce&) = delete;
    WishesInForce& operator=(const WishesInForce&) = delete;
};

/// Whether the address is a plain one of the list, to us as to Windows.
bool IsTrusted(const wchar_t* address, const wchar_t* trustedHosts);

} // namespace product_services_guard
