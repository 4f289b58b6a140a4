#include "host/installed_product.h"

#include <memory>
#include <windows.h>

namespace product_services {
namespace {

constexpr int LoadAttempts = 5;
constexpr DWORD PauseAfterFailureMs = 150;

} // namespace

ProductRecord& SelectProductRecord(const std::wstring& productName, const std::wstring& productVersion)
{
    // Meant: the first caller's product stays for the life of the process, a product without a record too.
    static std::unique_ptr<ProductRecord> record;
    if (!record) {
        record = std::make_unique<ProductRecord>(FindProductRecord(productName, productVersion));
    }
    return *record;
}

bool LoadProductRecord(ProductRecord& record)
{
    for (int attempt = 0; attempt < LoadAttempts; ++attempt) {
        if (record.Load()) {
            return true;
        }
        // Meant: after the last failure too, so that an absent record costs 750 ms.
        Sleep(PauseAfterFailureMs);
    }
    return false;
}

} // namespace product_services
