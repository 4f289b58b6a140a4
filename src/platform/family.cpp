#include "platform/family.h"

#include "product_family.h"

#include <iterator>
#include <string_view>

// The only place that reads the maker's header; what it refuses is said here, by the compiler.
namespace product_services {
namespace {

using product_family::KnownApiKeys;
using product_family::RecordRegistryPath;
using product_family::ServiceBaseAddress;

constexpr std::wstring_view Address = ServiceBaseAddress;
constexpr std::wstring_view RegistryPath = RecordRegistryPath;

static_assert(
#ifdef PRODUCT_FAMILY_WITHOUT_TLS
    Address.starts_with(L"http://"), "the tests' service speaks plain HTTP"
#else
    Address.starts_with(L"https://"), "ServiceBaseAddress must be an https address"
#endif
);
static_assert(!Address.ends_with(L'/'), "ServiceBaseAddress must not end with a slash");
static_assert(
    !RegistryPath.empty() && !RegistryPath.starts_with(L'\\') && !RegistryPath.ends_with(L'\\'),
    "RecordRegistryPath must be the path of a key, without a backslash at either end");

// An array of any spelling.
constexpr bool AreKeys(const auto& keys)
{
    for (const wchar_t* key : keys) {
        if (!key || !*key) {
            return false;
        }
    }
    return std::size(keys) == std::size(ProductFamily{}.knownApiKeys);
}
static_assert(AreKeys(KnownApiKeys), "KnownApiKeys must be six keys, none of them empty");

} // namespace

constinit const ProductFamily Family{
    ServiceBaseAddress,
    RecordRegistryPath,
    {KnownApiKeys[0], KnownApiKeys[1], KnownApiKeys[2], KnownApiKeys[3], KnownApiKeys[4], KnownApiKeys[5]}};

} // namespace product_services
