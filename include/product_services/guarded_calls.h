/** @file
 * Guarded calls: the update check and the upgrade center for hosts of any compiler and language. They are in
 * ProductServicesGuard.dll, which a host ships instead of ProductServices.dll.
 *
 * A guarded call returns, whatever the service sends and a language file holds. It verifies the service's
 * certificate, ends within a time limit, reports and opens https URLs only, and writes no further than the
 * capacity of the host's buffer. It throws nothing.
 *
 * Threads: call GuardedUpgrade, and GuardedCheckForUpdates without PRODUCT_SERVICES_OPTION_QUIET, on the
 * thread that runs the host's user interface. A quiet check may be made on any thread. One call runs at a
 * time: a second one returns PRODUCT_SERVICES_OUTCOME_BUSY at once, from whatever thread. Do not leave a call
 * by longjmp.
 *
 * First call wins: the first call of a process fixes the language and the installed product for the life of
 * the process.
 *
 * @since 1.0, all that is here.
 */
#ifndef PRODUCT_SERVICES_GUARDED_CALLS_H
#define PRODUCT_SERVICES_GUARDED_CALLS_H

#include "product_services/annotations.h"
#include "product_services/product_services.h"
#include "product_services/publisher.h"

/** How a guarded call ended. A host treats a value that it does not know as PRODUCT_SERVICES_OUTCOME_FAILED.
 * If no other text is named, the text is a sentence in English that says what happened. */
typedef enum ProductServicesOutcome PRODUCT_SERVICES_ENUM_TYPE
{
    /** Another failure, such as a lack of memory. The text is the error's. */
    PRODUCT_SERVICES_OUTCOME_FAILED = 0,
    /** A check found a newer release. The text is its download URL. */
    PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE = 1,
    /** The service has nothing newer, or nothing to sell. The text is the library's message, if it has one.
     */
    PRODUCT_SERVICES_OUTCOME_UP_TO_DATE = 2,
    /** The user chose an offer of the upgrade center, and its purchase URL was handed to the browser. The
     * text is the library's message. */
    PRODUCT_SERVICES_OUTCOME_BROWSER_OPENED = 3,
    /** The user left the upgrade center without buying. The text is the library's message. */
    PRODUCT_SERVICES_OUTCOME_USER_QUIT = 4,
    /** The registry has no record of the product: its installer did not write one, or the first call of this
     *  process named another product. The text is the library's message. */
    PRODUCT_SERVICES_OUTCOME_NO_PRODUCT_RECORD = 5,
    /** The API key, or the product key in the record, is empty. The service was not asked for releases. */
    PRODUCT_SERVICES_OUTCOME_NOTHING_SENT = 6,
    /** The service refused, or its connectivity probe did not answer "1". The text is the reason that the
     * service gives, or else the library's message. */
    PRODUCT_SERVICES_OUTCOME_REFUSED = 7,
    /** The service answered with a status that is neither a refusal nor an offer. The text names the status.
     */
    PRODUCT_SERVICES_OUTCOME_OTHER_STATUS = 8,
    /** The service could not be reached, or the connection broke. The text is libcurl's description. */
    PRODUCT_SERVICES_OUTCOME_UNREACHABLE = 9,
    /** The time limit was exceeded. */
    PRODUCT_SERVICES_OUTCOME_TIMED_OUT = 10,
    /** The host set the cancel flag, or ended its message loop (WM_QUIT) while the upgrade center was open.
     */
    PRODUCT_SERVICES_OUTCOME_CANCELLED = 11,
    /** The service's certificate is not valid, and no request was sent. The text says whose certificate it
     * is, who issued it, and what is wrong with it. */
    PRODUCT_SERVICES_OUTCOME_UNTRUSTED_CERTIFICATE = 12,
    /** The service gave a URL that is not allowed, see GuardedCallParams::trustedHosts. It was neither opened
     * nor reported. The text is the URL: do not open it. */
    PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS = 13,
    /** The reply could not be understood. The text is the parser's. */
    PRODUCT_SERVICES_OUTCOME_INVALID_REPLY = 14,
    /** Another guarded call is in progress. */
    PRODUCT_SERVICES_OUTCOME_BUSY = 15,
    /** A member of the structure has a value that cannot be used, and nothing was sent. The text says which.
     * If the structure is null or its size is not set, nothing was written. */
    PRODUCT_SERVICES_OUTCOME_INVALID_PARAMETER = 16
} ProductServicesOutcome;

/** Flags for GuardedCallParams::options. Each makes a call laxer or adds something to it. */
typedef enum ProductServicesOptions PRODUCT_SERVICES_ENUM_TYPE
{
    /** Show no message box, no wait cursor, and make no sound: for checks that the user has not asked for.
     * For GuardedCheckForUpdates only; GuardedUpgrade refuses it. */
    PRODUCT_SERVICES_OPTION_QUIET = 1,
    /** Show the upgrade center with the host's DPI awareness, which leaves its picture small on screens
     * beyond 100 %. Without this flag Windows scales the window as a whole. */
    PRODUCT_SERVICES_OPTION_HOST_DPI_AWARENESS = 2,
    /** Accept any certificate, as ProductServices.dll does: anybody on the network can then answer in the
     * service's place. For development services. */
    PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE = 4,
    /**
     * Use the proxy that is configured in Windows, for this call only. The environment variables https_proxy,
     * all_proxy and no_proxy take precedence where they are set.
     *
     * If Windows has automatic detection (WPAD) or a configuration script (PAC) set, the script is asked for
     * the service's URL, and the first of its proxies that accepts a connection is used; a script that cannot
     * be fetched or run counts as none. If there is no script, the configured proxy is used unless the bypass
     * list names the service. Detected scripts get no logon of the user. SOCKS proxies are not supported, and
     * neither are proxies that demand a logon (HTTP status 407).
     */
    PRODUCT_SERVICES_OPTION_SYSTEM_PROXY = 8
} ProductServicesOptions;

/** For GuardedCallParams::timeLimitMs: no limit. */
#define PRODUCT_SERVICES_NO_TIME_LIMIT 0xFFFFFFFFu

/** In GuardedCallParams::resultCode: the call has reported no result code. */
#define PRODUCT_SERVICES_NO_RESULT 0xFFFFFFFFu

/**
 * The parameters of a guarded call. The host owns the structure and everything that it points to, and changes
 * neither until the call returns. Zero it, set size, then fill in what is needed: a zeroed member is the safe
 * choice.
 *
 * Later versions add members at the end. A member counts if `size` reaches past it, so a host that was built
 * with an older header keeps working: members that it does not have read as zero and are not written.
 */
typedef struct GuardedCallParams
{
    /** In: sizeof(GuardedCallParams). */
    uint32_t size;
    /** In: a ProductServicesLanguage; any other value is English unless there is a language file for US. */
    int32_t languageId;
    const wchar_t* productName; /**< In: display name of the calling product. Null reads as an empty text. */
    const wchar_t* productVersion; /**< In: its version text; selects the record together with productName. */
    const wchar_t* apiKey;         /**< In: its service API key. */
    /**
     * In: the hosts that a URL of the service may lead to, such as
     *
     *     L"example.com;*.example.com;shop.example.org:8443"
     *
     * or null for any host. Entries are separated by semicolons. Each is a host name, or "*." and a name for
     * all of its subdomains but not the name itself, and a port if that is not 443. Case does not matter.
     *
     * With or without a list, a URL must be written in a strict form that every URL parser reads the same
     * way: "https://", a host name, ":" and a port if there is one, and then the end or "/" and whatever may
     * follow in a URL (RFC 3986), 2,083 characters at most. A host name consists of labels of ASCII letters,
     * digits and inner hyphens, separated by dots; its last label is not a number, so IP addresses are
     * refused. Internationalized names are written as in the DNS ("xn--...").
     *
     * Any other URL ends the call with PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS: the download URL of a
     * check, and the purchase URL of a chosen offer, which is then not handed to the shell.
     */
    const wchar_t* trustedHosts;
    /** In: a bitwise OR of ProductServicesOptions flags. */
    uint32_t options;
    /**
     * In: the time in milliseconds that all transfers of the call may take together, including the search for
     * a proxy. 0: 30 seconds. PRODUCT_SERVICES_NO_TIME_LIMIT: none. Time with a window open does not count.
     *
     * Host names are resolved on the calling thread in Windows' own time, which the limit does not cut short.
     */
    uint32_t timeLimitMs;
    /** In: the host may set this flag to a value other than 0, from any thread, to end the transfers of the
     * call; it is looked at several times a second. An open window remains the user's to close. Null: none.
     */
    const volatile uint32_t* cancelFlag;
    /** In: the buffer for the text that ProductServicesOutcome describes. Null: the text is not wanted. */
    wchar_t* resultText;
    /** In: how many wchar_t the buffer holds, the terminating NUL included. */
    uint32_t resultTextCapacity;
    /** Out: the ProductServicesResultCode that the call has reported, with the outcomes NEWER_RELEASE,
     * UP_TO_DATE, BROWSER_OPENED, USER_QUIT, NO_PRODUCT_RECORD and REFUSED; else PRODUCT_SERVICES_NO_RESULT.
     */
    uint32_t resultCode;
    /** Out: 1 if the text was longer than the buffer and was truncated, at a whole character; else 0. */
    uint32_t isTextTruncated;
    uint32_t reserved; /**< Not used yet. */
} GuardedCallParams;

static_assert(offsetof(GuardedCallParams, trustedHosts) == 32, "GuardedCallParams layout");
static_assert(offsetof(GuardedCallParams, cancelFlag) == 48, "GuardedCallParams layout");
static_assert(offsetof(GuardedCallParams, resultText) == 56, "GuardedCallParams layout");
static_assert(sizeof(GuardedCallParams) == 80, "GuardedCallParams layout");
static_assert(sizeof(ProductServicesOutcome) == 4, "outcomes have 32 bits");

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Asks the service whether a newer release of the calling product exists.
 *
 * Without PRODUCT_SERVICES_OPTION_QUIET, the user is told in a message box that the product is up to date
 * (UP_TO_DATE), or that there is no connection (REFUSED, UNREACHABLE, TIMED_OUT). Everything else is the
 * host's to tell.
 */
ProductServicesOutcome PRODUCT_SERVICES_CALL
GuardedCheckForUpdates(PRODUCT_SERVICES_INOUT_OPT GuardedCallParams* params);

/** Shows the upgrade center, if the service has offers. Everything else is the host's to tell. */
ProductServicesOutcome PRODUCT_SERVICES_CALL
GuardedUpgrade(PRODUCT_SERVICES_INOUT_OPT GuardedCallParams* params);

#ifdef __cplusplus
}
#endif

#endif
