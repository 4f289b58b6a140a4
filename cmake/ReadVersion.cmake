# Reads the version from version.h, and configures again when it changes. vcpkg's manifest and the overlay port must repeat
# the version.
file(STRINGS "${CMAKE_CURRENT_SOURCE_DIR}/include/product_services/version.h" version_lines
    REGEX "^#define PRODUCT_SERVICES_VERSION_(MAJOR|MINOR|PATCH) [0-9]+$")
string(REGEX REPLACE "#define PRODUCT_SERVICES_VERSION_[A-Z]+ " "" version_numbers "${version_lines}")
list(JOIN version_numbers "." PRODUCT_SERVICES_VERSION)
foreach(manifest vcpkg.json packaging/vcpkg/vcpkg.json)
    file(READ "${CMAKE_CURRENT_SOURCE_DIR}/${manifest}" json)
    string(JSON repeated GET "${json}" version-semver)
    if(NOT repeated STREQUAL PRODUCT_SERVICES_VERSION)
        message(FATAL_ERROR "${manifest} has version ${repeated}, but version.h has ${PRODUCT_SERVICES_VERSION}.")
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${manifest}")
endforeach()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    "${CMAKE_CURRENT_SOURCE_DIR}/include/product_services/version.h")
