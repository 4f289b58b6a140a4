/** @file
 * Direct calls: the update check and the upgrade center as ProductServices.dll exports them, for C11 and C++
 * hosts on 64-bit Windows.
 *
 * Threads: call both functions on the thread that runs the host's user interface, one call at a time. A call
 * blocks that thread until the service has answered, without a timeout, and until every window that the call
 * has opened is closed. The windows have no owner, so they do not disable the host's windows: the host has to
 * prevent its user from starting a second call.
 *
 * First call wins: the first call of a process fixes the language and the installed product for the life of
 * the process.
 *
 * @since 1.0
 */
#ifndef PRODUCT_SERVICES_PRODUCT_SERVICES_H
#define PRODUCT_SERVICES_PRODUCT_SERVICES_H

#include "product_services/annotations.h"
#include "product_services/version.h"

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

/** The result codes in HostContext::resultCode. The message for the code is in resultText. */
enum ProductServicesResultCode
{
    /** "Unstable internet connection." No call reports this code at present. */
    PRODUCT_SERVICES_REFUSED = 0,
    /** A newer release exists. resultText contains its download address instead of a message. */
    PRODUCT_SERVICES_SUCCESS = 200,
    /** "An unknown error occurred." No call reports this code at present. */
    PRODUCT_SERVICES_UNKNOWN_ERROR = 400,
    /** "No internet found!" No call reports this code at present. */
    PRODUCT_SERVICES_NO_INTERNET = 503,
    /** "Unable to reach server!" No call reports this code at present. */
    PRODUCT_SERVICES_SERVER_UNREACHABLE = 504,
    /** The user left the upgrade center without buying. */
    PRODUCT_SERVICES_USER_QUIT = 540,
    /** The service has nothing to offer in the upgrade center. */
    PRODUCT_SERVICES_NO_UPGRADES = 920,
    /** The purchase address of the chosen offer was handed to the browser. */
    PRODUCT_SERVICES_BROWSER_OPENED = 930,
    /** The upgrade center could not reach the service, or the service refused the request. */
    PRODUCT_SERVICES_NO_CONNECTION = 940,
    /** The calling product has no stored record, which its installer should have written. */
    PRODUCT_SERVICES_NO_PRODUCT_RECORD = 950
};

/** The languages for HostContext::languageId. */
enum ProductServicesLanguage
{
    PRODUCT_SERVICES_LANGUAGE_EN = 120, /**< English, which may have a language file like the others. */
    PRODUCT_SERVICES_LANGUAGE_CZ = 130, /**< Czech. */
    PRODUCT_SERVICES_LANGUAGE_DE = 140, /**< German. */
    PRODUCT_SERVICES_LANGUAGE_ES = 150, /**< Spanish. */
    PRODUCT_SERVICES_LANGUAGE_FR = 160, /**< French. */
    PRODUCT_SERVICES_LANGUAGE_IT = 170, /**< Italian. */
    PRODUCT_SERVICES_LANGUAGE_JA = 180, /**< Japanese. */
    PRODUCT_SERVICES_LANGUAGE_PL = 190, /**< Polish. */
    PRODUCT_SERVICES_LANGUAGE_RU = 200, /**< Russian. */
    PRODUCT_SERVICES_LANGUAGE_TW = 220, /**< Traditional Chinese. */
    PRODUCT_SERVICES_LANGUAGE_ZH = 230  /**< Simplified Chinese. */
};

/**
 * The structure that a host passes to every call. The host owns it and every buffer that it points to. Texts
 * are NUL-terminated UTF-16 and must stay valid until the call returns. Null means an empty text.
 *
 * Initialise resultCode and the buffer before each call, because a call that has nothing to report leaves
 * both unchanged. If a call reports more than once, the last report counts.
 */
typedef struct HostContext
{
    /** In: the product's display name, which is the caption of message boxes and of the upgrade center. */
    const wchar_t* productName;
    /** In: the product's version, which selects the stored record together with productName. */
    const wchar_t* productVersion;
    /** In: the product's service API key. */
    const wchar_t* apiKey;
    /**
     * In: a ProductServicesLanguage. Any other value means the language US. The texts come from a file such
     * as lang\DE\Vemo_DE.lang in the working directory. They are English if there is no such file, or if the
     * user may not write to it.
     */
    int32_t languageId;
    /** The library neither reads nor writes the reserved members. */
    wchar_t* reserved1;
    /** Out: a ProductServicesResultCode. */
    uint32_t resultCode;
    /**
     * Out: the message for resultCode or, with 200, the download address. The text is copied without a length
     * check, so the buffer must be large enough for the longest message of the language file and the longest
     * address that the service may send, including the terminating NUL. Null if you do not want the text.
     */
    wchar_t* resultText;
    wchar_t* reserved2; /**< As reserved1. */
    wchar_t* reserved3; /**< As reserved1. */
    int32_t reserved4;  /**< As reserved1. */
} HostContext;

static_assert(sizeof(wchar_t) == 2, "texts are UTF-16");
static_assert(offsetof(HostContext, productName) == 0, "HostContext layout");
static_assert(offsetof(HostContext, productVersion) == 8, "HostContext layout");
static_assert(offsetof(HostContext, apiKey) == 16, "HostContext layout");
static_assert(offsetof(HostContext, languageId) == 24, "HostContext layout");
static_assert(offsetof(HostContext, reserved1) == 32, "HostContext layout");
static_assert(offsetof(HostContext, resultCode) == 40, "HostContext layout");
static_assert(offsetof(HostContext, resultText) == 48, "HostContext layout");
static_assert(offsetof(HostContext, reserved2) == 56, "HostContext layout");
static_assert(offsetof(HostContext, reserved3) == 64, "HostContext layout");
static_assert(offsetof(HostContext, reserved4) == 72, "HostContext layout");
static_assert(sizeof(HostContext) == 80, "HostContext layout");

/* Declared noexcept(false) because compilers may assume that extern "C" functions do not throw (Visual Studio
 * does with /EHsc, its default) and remove the catch blocks around calls to them. */
#ifdef __cplusplus
#define PRODUCT_SERVICES_THROWS noexcept(false)
extern "C" {
#else
#define PRODUCT_SERVICES_THROWS
#endif

/**
 * Asks the service whether a newer release of the calling product exists.
 *
 * - If there is a newer release, it reports 200 with the download address and shows nothing.
 * - If the product has no stored record, it reports 950 after 750 ms and shows nothing.
 * - If nothing is newer (an empty reply), there is no connection, or the service refuses with status 0, it
 *   shows a message box and reports nothing.
 * - If apiKey or the key in the record is empty, it returns at once. Nothing is sent, shown or reported.
 * - If the service answers with another status, nothing is shown or reported.
 *
 * A null context is ignored.
 *
 * The call may throw C++ exceptions, which a host should catch as std::exception& if the same compiler has
 * built it and the library; other hosts should use guarded_calls.h. It throws if the reply is not JSON or has
 * another structure than the service's replies (parse error 101, type errors 302 and 305, out of range 406),
 * or if a text cannot be converted ("bad conversion"). resultCode and the buffer are then unchanged.
 */
void PRODUCT_SERVICES_CALL CheckForUpdates(PRODUCT_SERVICES_INOUT_OPT HostContext* context)
    PRODUCT_SERVICES_THROWS;

/**
 * Shows the upgrade center, which lists newer products that the user can buy. The purchase address of the
 * chosen one is opened in the browser.
 *
 * - It reports 930 if an address was handed to the browser, and 540 if the user left.
 * - It reports 920 if there is nothing on offer (an empty reply), 940 if there is no connection or the
 * service refuses with status 0, and 950 if the product has no stored record. The last takes 750 ms in
 * addition to the attempt to connect. No window is shown.
 * - If apiKey or the key in the record is empty, the service answers with another status, or the list of
 *   offers is empty, no window is shown and nothing is reported.
 *
 * A null context is ignored. The call throws the same exceptions as CheckForUpdates.
 */
void PRODUCT_SERVICES_CALL Upgrade(PRODUCT_SERVICES_INOUT_OPT HostContext* context) PRODUCT_SERVICES_THROWS;

#ifdef __cplusplus
}
#endif

#undef PRODUCT_SERVICES_THROWS

#endif
