#pragma once

#include <string>

/// Why ProductServicesGuard.dll cannot be called, a sentence without its full stop; empty where it can be.
const std::wstring& GuardFailure();
