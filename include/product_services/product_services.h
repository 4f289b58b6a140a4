/** @file
 * ProductServices: update check and upgrade center for a family of desktop applications.
 *
 * The interface of ProductServices.dll for C11 and C++ hosts (64-bit Windows).
 *
 * Threads: call both functions on the thread that runs the host's user interface, one call at a
 * time. A call blocks that thread until the service has answered (no timeout is set) and every
 * window that the call opened is closed. The windows have no owner, so no window of the host is
 * disabled meanwhile: the host itself keeps its user from starting a second call.
 *
 * First call wins: the first call of a process fixes the language and the installed product for the
 * life of the process.
 *
 * @since 1.0, all that is here.
 */
#ifndef PRODUCT_SERVICES_PRODUCT_SERVICES_H
#define PRODUCT_SERVICES_PRODUCT_SERVICES_H

#include "product_services/annotations.h"
#include "product_services/version.h"

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

/** What a call reports in HostContext::resultCode, with the message that goes into resultText. */
enum ProductServicesResultCode
{
    /** Mapped, reported by no call: "Unstable internet connection." */
    PRODUCT_SERVICES_REFUSED = 0,
    /** A newer release exists; resultText holds its download address instead of a message. */
    PRODUCT_SERVICES_SUCCESS = 200,
    /** Mapped, reported by no call: "An unknown error occurred." */
    PRODUCT_SERVICES_UNKNOWN_ERROR = 400,
    /** Mapped, reported by no call: "No internet found!" */
    PRODUCT_SERVICES_NO_INTERNET = 503,
    /** Mapped, reported by no call today: "Unable to reach server!" */
    PRODUCT_SERVICES_SERVER_UNREACHABLE = 504,
    /** The user left the upgrade center without buying. */
    PRODUCT_SERVICES_USER_QUIT = 540,
    /** The service has nothing to offer in the upgrade center. */
    PRODUCT_SERVICES_NO_UPGRADES = 920,
    /** The purchase address of the chosen offer was handed to the browser. */
    PRODUCT_SERVICES_BROWSER_OPENED = 930,
    /** The upgrade center needs a connection to the service and found none. */
    PRODUCT_SERVICES_NO_CONNECTION = 940,
    /** The calling product has no stored record (its installer writes it). */
    PRODUCT_SERVICES_NO_PRODUCT_RECORD = 950
};

/** The language of the texts, for HostContext::languageId. */
enum ProductServicesLanguage
{
    PRODUCT_SERVICES_LANGUAGE_EN = 120, /**< English; its texts come from a file like the others'. */
    PRODUCT_SERVICES_LANGUAGE_CZ = 130, /**< Czech. */
    PRODUCT_SERVICES_LANGUAGE_DE = 140, /**< German. */
    PRODUCT_SERVICES_LANGUAGE_ES = 150, /**< Spanish. */
    PRODUCT_SERVICES_LANGUAGE_FR = 160, /**< French. */
    PRODUCT_SERVICES_LANGUAGE_IT = 170, /**< Italian. */
    PRODUCT_SERVICES_LANGUAGE_JA = 180, /**< Japanese. */
    PRODUCT_SERVICES_LANGUAGE_PL = 190, /**< Polish. */
    PRODUCT_SERVICES_LANGUAGE_RU = 200, /**< Russian. */
    PRODUCT_SERVICES_LANGUAGE_TW = 220, /**< Chinese in traditional characters. */
    PRODUCT_SERVICES_LANGUAGE_ZH = 230  /**< Chinese in simplified characters. */
};

/**
 * The structure that a host passes to every call. The host owns it and every buffer that it points to;
 * texts are NUL-terminated UTF-16 and stay valid for the whole call. A null text reads as an empty one.
 *
 * Set resultCode and resultText before each call: a call that has nothing to report leaves both as they
 * are. When one call reports more than once, the last report stands.
 */
typedef struct HostContext
{
    /** In: display name of the calling product; caption of the message boxes and of the upgrade center. */
    const wchar_t* productName;
    /** In: version text of the calling product; selects the stored record together with productName. */
    const wchar_t* productVersion;
    /** In: service API key of the calling product. */
    const wchar_t* apiKey;
    /**
     * In: a ProductServicesLanguage; any other value is the language US. Texts come from
     * lang\DE\Vemo_DE.lang (and so on) under the working directory, or are English when there is no such
     * file that the user may write to.
     */
    int32_t languageId;
    /** Never read or written by the library, like all members named reserved. */
    wchar_t* reserved1;
    /** Out: a ProductServicesResultCode. */
    uint32_t resultCode;
    /**
     * Out: the message for resultCode or, with 200, the download address. The text is copied without a
     * bound: the buffer must hold the longest message of the language file and the longest address that
     * the service may send, with the terminating NUL. Null: the text is not wanted.
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
 * - A newer release: 200, and its download address in resultText; nothing is shown.
 * - No stored record of the product: 950 with its message, after 750 ms; nothing is shown.
 * - Nothing newer (an empty answer), or no connection, or a refusal with status 0: a message box; nothing
 *   is reported.
 * - An empty apiKey or an empty key in the record: returns at once; nothing is sent, shown or reported.
 * - A refusal with another status: nothing is shown or reported.
 *
 * A null context is ignored: there is nowhere to report to.
 *
 * C++ exceptions leave the call, and a host should catch them (std::exception&, where host and library
 * come from the same compiler; other hosts use guarded_calls.h): an answer that is not JSON or has another
 * shape than the service's (parse error 101, type errors 302 and 305, out of range 406), or a text that is
 * not convertible ("bad conversion"). resultCode and resultText are then as the host set them.
 */
void PRODUCT_SERVICES_CALL CheckForUpdates(PRODUCT_SERVICES_INOUT_OPT HostContext* context)
    PRODUCT_SERVICES_THROWS;

/**
 * Shows the upgrade center: the newer products on offer, of which the user may open one's purchase
 * address in the browser.
 *
 * - 930 an address was handed to the browser; 540 the user left.
 * - 920 nothing on offer (an empty answer); 940 no connection, or a refusal with status 0; 950 no stored
 *   record of the product, after the connection was tried and 750 ms.
 * - An empty apiKey or an empty key in the record, a refusal with another status, an empty list: no window
 *   is shown and nothing is reported.
 *
 * A null context is ignored. Exceptions leave the call as with CheckForUpdates.
 */
void PRODUCT_SERVICES_CALL Upgrade(PRODUCT_SERVICES_INOUT_OPT HostContext* context) PRODUCT_SERVICES_THROWS;

#ifdef __cplusplus
}
#endif

#undef PRODUCT_SERVICES_THROWS

#endif
