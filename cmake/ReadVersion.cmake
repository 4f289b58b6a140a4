# The public header is the one place that holds the version.
file(STRINGS "${CMAKE_SOURCE_DIR}/include/product_services/product_services.h" version_lines
    REGEX "^#define PRODUCT_SERVICES_VERSION_(MAJOR|MINOR|PATCH) [0-9]+$")
string(REGEX REPLACE "#define PRODUCT_SERVICES_VERSION_[A-Z]+ " "" version_numbers "${version_lines}")
list(JOIN version_numbers "." PRODUCT_SERVICES_VERSION)
