#include <afxwin.h>

#include "ui/background_bitmap.h"

#include "platform/family.h"
#include "ui/resource.h"

#include <iterator>

namespace product_services {
namespace {

// In the order of KnownApiKeys. Deliberate: three product lines share one picture.
constexpr int BackgroundsByKnownKey[]{IDB_BACKGROUND_332, IDB_BACKGROUND_333,  IDB_BACKGROUND_333,
                                      IDB_BACKGROUND_333, IDB_BACKGROUND_1077, IDB_BACKGROUND_335};
static_assert(std::size(BackgroundsByKnownKey) == std::size(Family.knownApiKeys));

int BackgroundId(const std::wstring& apiKey)
{
    for (std::size_t i = 0; i < std::size(BackgroundsByKnownKey); ++i) {
        if (apiKey == Family.knownApiKeys[i]) {
            return BackgroundsByKnownKey[i];
        }
    }
    return IDB_BACKGROUND_343;
}

} // namespace

HBITMAP BackgroundBitmapForProduct(const std::wstring& apiKey)
{
    if (apiKey.empty()) {
        return nullptr;
    }
    return LoadBitmapW(AfxGetResourceHandle(), MAKEINTRESOURCEW(BackgroundId(apiKey)));
}

} // namespace product_services
