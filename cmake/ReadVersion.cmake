# version.h is the one place that holds the version; configuring follows a change of it.
file(STRINGS "${CMAKE_SOURCE_DIR}/include/product_services/version.h" version_lines
    REGEX "^#define PRODUCT_SERVICES_VERSION_(MAJOR|MINOR|PATCH) [0-9]+$")
string(REGEX REPLACE "#define PRODUCT_SERVICES_VERSION_[A-Z]+ " "" version_numbers "${version_lines}")
list(JOIN version_numbers "." PRODUCT_SERVICES_VERSION)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    "${CMAKE_SOURCE_DIR}/include/product_services/version.h")
