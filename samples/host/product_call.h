#pragma once

#include <product_services/product_services.hpp>

#include <string>

/// CheckForUpdates or Upgrade.
using ProductCall = product_services::CallResult (*)(const product_services::Product&);

/// Says in plain words what came of a call.
std::wstring Describe(const product_services::CallResult& result);
