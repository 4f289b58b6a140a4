# version.h is the one place that holds the version; configuring follows a change of it. vcpkg.json has to repeat it.
file(STRINGS "${CMAKE_CURRENT_SOURCE_DIR}/include/product_services/version.h" version_lines
    REGEX "^#define PRODUCT_SERVICES_VERSION_(MAJOR|MINOR|PATCH) [0-9]+$")
string(REGEX REPLACE "#define PRODUCT_SERVICES_VERSION_[A-Z]+ " "" version_numbers "${version_lines}")
list(JOIN version_numbers "." PRODUCT_SERVICES_VERSION)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    "${CMAKE_CURRENT_SOURCE_DIR}/include/product_services/version.h" "${CMAKE_CURRENT_SOURCE_DIR}/vcpkg.json")
file(READ "${CMAKE_CURRENT_SOURCE_DIR}/vcpkg.json" vcpkg_manifest)
string(JSON vcpkg_version GET "${vcpkg_manifest}" version-semver)
if(NOT vcpkg_version STREQUAL PRODUCT_SERVICES_VERSION)
    message(FATAL_ERROR "vcpkg.json says version ${vcpkg_version}, version.h ${PRODUCT_SERVICES_VERSION}.")
endif()
