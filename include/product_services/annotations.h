/** @file
 * Macros for the declarations in the public headers: the calling convention, the size of an enumeration's
 * values, and annotations for Visual Studio's analyzer.
 *
 * @since 1.0
 */
#ifndef PRODUCT_SERVICES_ANNOTATIONS_H
#define PRODUCT_SERVICES_ANNOTATIONS_H

#include <stdint.h>

/** The calling convention of all exports, whatever the default of the host's compiler is (/Gv, /Gr, /Gz). */
#ifdef _WIN32
#define PRODUCT_SERVICES_CALL __cdecl
#else
#define PRODUCT_SERVICES_CALL
#endif

/** Makes the values of an enumeration uint32_t if the language supports it. */
#ifdef __cplusplus
#define PRODUCT_SERVICES_ENUM_TYPE : uint32_t
#else
#define PRODUCT_SERVICES_ENUM_TYPE
#endif

/* SAL comes with Windows' headers. */
#if defined(_MSC_VER)
#include <sal.h>
#elif defined(__has_include)
#if __has_include(<sal.h>)
#include <sal.h>
#endif
#endif
#ifdef _Inout_
#define PRODUCT_SERVICES_INOUT _Inout_                     /**< A structure that is read and written. */
#define PRODUCT_SERVICES_INOUT_OPT _Inout_opt_             /**< The same, or null. */
#define PRODUCT_SERVICES_IN_TEXT _In_z_                    /**< A NUL-terminated text. */
#define PRODUCT_SERVICES_IN_TEXT_OPT _In_opt_z_            /**< The same, or null. */
#define PRODUCT_SERVICES_OUT_TEXT(n) _Out_writes_opt_z_(n) /**< A buffer of n characters, or null. */
#else
#define PRODUCT_SERVICES_INOUT
#define PRODUCT_SERVICES_INOUT_OPT
#define PRODUCT_SERVICES_IN_TEXT
#define PRODUCT_SERVICES_IN_TEXT_OPT
#define PRODUCT_SERVICES_OUT_TEXT(n)
#endif

#endif
