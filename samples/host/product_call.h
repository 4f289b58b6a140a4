#pragma once

#include "options.h"

#include <string>

enum class ProductCall
{
    CheckForUpdates,
    Upgrade
};

/// Calls the library for the product that `options` names and says in plain words what came back.
std::wstring CallAndDescribe(ProductCall call, const Options& options);
