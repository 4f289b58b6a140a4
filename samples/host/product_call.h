#pragma once

#include <product_services/product_services.h>

#include <string>

/// CheckForUpdates or Upgrade.
using ProductCall = void (*)(HostContext*);

/// Calls the library for the product that `context` names and says in plain words what came back.
std::wstring CallAndDescribe(ProductCall call, HostContext& context);
