/** @file
 * The version of the headers and of the library. The build, the version resource and the package use it.
 * vcpkg.json repeats it, and CMake compares them.
 *
 * @since 1.0
 */
#ifndef PRODUCT_SERVICES_VERSION_H
#define PRODUCT_SERVICES_VERSION_H

/** A host that was built for one major version does not work with another. */
#define PRODUCT_SERVICES_VERSION_MAJOR 1
/** Increases with new features. */
#define PRODUCT_SERVICES_VERSION_MINOR 0
/** Increases with bug fixes. */
#define PRODUCT_SERVICES_VERSION_PATCH 0

#endif
