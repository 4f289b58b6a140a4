// The tests' product family, in the words of the tests.
#pragma once

#include "product_family.h"

#include <string>

/// The address that the service listens at.
inline const char* const ServiceAddress = TESTS_ADDRESS;

/// Where the service is asked.
inline const std::wstring ServiceUrl = product_family::ServiceBaseAddress;

/// The registry path below which a product has its key "name\version".
inline const std::wstring RecordPath = product_family::RecordRegistryPath;
