/* The version of the header and of the library that it belongs to. Nothing else holds it: the build, the
 * version resource and the package take it from here. */
#ifndef PRODUCT_SERVICES_VERSION_H
#define PRODUCT_SERVICES_VERSION_H

#define PRODUCT_SERVICES_VERSION_MAJOR 1
#define PRODUCT_SERVICES_VERSION_MINOR 0
#define PRODUCT_SERVICES_VERSION_PATCH 0

#endif
