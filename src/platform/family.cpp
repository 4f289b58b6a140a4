#include "platform/family.h"

#include "product_family.h"

// The only file that includes the family's header, which the build generates from the maker's
// product_family.json.
namespace product_services {

using product_family::KnownApiKeys;

constinit const ProductFamily Family{
    product_family::PackageId,
    product_family::ServiceBaseAddress,
    product_family::RecordRegistryPath,
    product_family::PolicyRegistryPath,
    {KnownApiKeys[0], KnownApiKeys[1], KnownApiKeys[2], KnownApiKeys[3], KnownApiKeys[4], KnownApiKeys[5]}};

} // namespace product_services
