/* The version of the header and of the library that it belongs to. The build, the version resource and the
 * package take it from here; vcpkg.json repeats it, and configuring compares them. */
#ifndef PRODUCT_SERVICES_VERSION_H
#define PRODUCT_SERVICES_VERSION_H

#define PRODUCT_SERVICES_VERSION_MAJOR 1
#define PRODUCT_SERVICES_VERSION_MINOR 0
#define PRODUCT_SERVICES_VERSION_PATCH 0

#endif
