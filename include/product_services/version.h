/** @file
 * The version of the header and of the library that it belongs to. The build, the version resource and the
 * package take it from here; vcpkg.json repeats it, and configuring compares them.
 *
 * @since 1.0, all that is here.
 */
#ifndef PRODUCT_SERVICES_VERSION_H
#define PRODUCT_SERVICES_VERSION_H

/** A host built for one major version works with no other. */
#define PRODUCT_SERVICES_VERSION_MAJOR 1
/** Rises with what is new. */
#define PRODUCT_SERVICES_VERSION_MINOR 0
/** Rises with what is mended. */
#define PRODUCT_SERVICES_VERSION_PATCH 0

#endif
