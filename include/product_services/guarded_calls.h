/** @file
 * Guarded calls: the update check and the upgrade center for hosts in any language, built by any compiler.
 * They are in ProductServicesGuard.dll, which a host ships instead of ProductServices.dll.
 *
 * A guarded call always returns, whatever the service sends and a language file contains. It verifies the
 * service's certificate, ends within a time limit, reports and opens only https URLs, never writes beyond
 * the capacity of the host's buffer, and throws nothing.
 *
 * Threads: call GuardedUpgrade, and GuardedCheckForUpdates without PRODUCT_SERVICES_OPTION_QUIET, on the
 * thread that runs the host's user interface. A quiet check may run on any thread. There is one call at a
 * time: a second call on any thread returns PRODUCT_SERVICES_OUTCOME_BUSY at once. Do not leave a call by
 * longjmp.
 *
 * First call wins: the first call of a process fixes the language and the installed product for the life of
 * the process.
 *
 * @since 1.0
 */
#ifndef PRODUCT_SERVICES_GUARDED_CALLS_H
#define PRODUCT_SERVICES_GUARDED_CALLS_H

#include "product_services/annotations.h"
#include "product_services/product_services.h"
#include "product_services/publisher.h"

/** The outcome of a guarded call. A host should treat an unknown value like PRODUCT_SERVICES_OUTCOME_FAILED.
 * Unless a value describes another text, the text is an English sentence that says what happened. */
typedef enum ProductServicesOutcome PRODUCT_SERVICES_ENUM_TYPE
{
    /** Another failure, such as a lack of memory. The text is the error message. */
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
     * process named another product. The text is the library's message. */
    PRODUCT_SERVICES_OUTCOME_NO_PRODUCT_RECORD = 5,
    /** The API key, or the product key in the record, is empty, so no update query was sent. */
    PRODUCT_SERVICES_OUTCOME_NOTHING_SENT = 6,
    /** The service refused the request, or did not answer the connectivity probe with "1". The text is the
     * service's reason, or else the library's message. */
    PRODUCT_SERVICES_OUTCOME_REFUSED = 7,
    /** The service answered with a status other than 0. The text contains the status. */
    PRODUCT_SERVICES_OUTCOME_OTHER_STATUS = 8,
    /** The service could not be reached, or the connection broke. The text is libcurl's description. */
    PRODUCT_SERVICES_OUTCOME_UNREACHABLE = 9,
    /** The time limit was exceeded. */
    PRODUCT_SERVICES_OUTCOME_TIMED_OUT = 10,
    /** The host set the cancel flag, or ended its message loop (WM_QUIT) while the upgrade center was open.
     */
    PRODUCT_SERVICES_OUTCOME_CANCELLED = 11,
    /** The service's certificate is not valid, and no request was sent. The text contains the certificate's
     * subject, its issuer, and what is wrong with it. */
    PRODUCT_SERVICES_OUTCOME_UNTRUSTED_CERTIFICATE = 12,
    /** The service sent a URL that is not allowed, see GuardedCallParams::trustedHosts. It was neither opened
     * nor reported. The text is the URL: do not open it. */
    PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS = 13,
    /** The reply could not be parsed. The text is the parser's error message. */
    PRODUCT_SERVICES_OUTCOME_INVALID_REPLY = 14,
    /** Another guarded call is in progress. */
    PRODUCT_SERVICES_OUTCOME_BUSY = 15,
    /** A member of the structure has an invalid value, and nothing was sent. The text says which. If the
     * structure is null or its size is not set, nothing was written either. */
    PRODUCT_SERVICES_OUTCOME_INVALID_PARAMETER = 16,
    /** An administrator has disabled the call, see GetDisabledCalls. Nothing was sent or shown. */
    PRODUCT_SERVICES_OUTCOME_DISABLED_BY_POLICY = 17
} ProductServicesOutcome;

/** Flags for GuardedCallParams::options. Without flags, a call has the safe defaults. */
typedef enum ProductServicesOptions PRODUCT_SERVICES_ENUM_TYPE
{
    /** Show no message box and no wait cursor, and make no sound. For checks that the user did not start.
     * Only for GuardedCheckForUpdates; GuardedUpgrade rejects it. */
    PRODUCT_SERVICES_OPTION_QUIET = 1,
    /** Show the upgrade center with the host's DPI awareness. Its picture is then not scaled, so it looks
     * small on displays that are scaled above 100 %. Without this flag, Windows scales the entire window. */
    PRODUCT_SERVICES_OPTION_HOST_DPI_AWARENESS = 2,
    /** Accept any certificate. An attacker on the network can then impersonate the service. For development
     * services. */
    PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE = 4,
    /**
     * Use the proxy that is configured in Windows for this call. The environment variables https_proxy,
     * all_proxy and no_proxy take precedence if they are set.
     *
     * If automatic detection (WPAD) or a configuration script (PAC) is enabled in Windows, the script is
     * queried for the service's URL, and the first of its proxies that accepts a connection is used. A script
     * that cannot be downloaded or run is ignored. If there is no script, the configured proxy is used unless
     * the bypass list matches the service. The user's credentials are not sent to detected scripts. SOCKS
     * proxies and proxies that require authentication (HTTP status 407) are not supported.
     */
    PRODUCT_SERVICES_OPTION_SYSTEM_PROXY = 8
} ProductServicesOptions;

/** Flags that GetDisabledCalls returns. */
typedef enum ProductServicesDisabledCalls PRODUCT_SERVICES_ENUM_TYPE
{
    /** GuardedCheckForUpdates is disabled. */
    PRODUCT_SERVICES_DISABLED_CHECK_FOR_UPDATES = 1,
    /** GuardedUpgrade is disabled. */
    PRODUCT_SERVICES_DISABLED_UPGRADE = 2
} ProductServicesDisabledCalls;

/** For GuardedCallParams::timeLimitMs: no limit. */
#define PRODUCT_SERVICES_NO_TIME_LIMIT 0xFFFFFFFFu

/** In GuardedCallParams::resultCode: the call did not report a result code. */
#define PRODUCT_SERVICES_NO_RESULT 0xFFFFFFFFu

/**
 * The parameters of a guarded call. The host owns the structure and everything that it points to, and must
 * not change them until the call returns. Set the structure to zero, set size, and then fill in what you
 * need: zero is the safe default of every member.
 *
 * Later versions add members at the end. A member is used only if it is completely within `size`, so a host
 * that was built with an older header keeps working: members that it does not have are read as zero and not
 * written.
 */
typedef struct GuardedCallParams
{
    /** In: sizeof(GuardedCallParams). */
    uint32_t size;
    /** In: a ProductServicesLanguage. Any other value is English unless there is a language file for US. */
    int32_t languageId;
    const wchar_t* productName;    /**< In: the product's display name. Null means an empty text. */
    const wchar_t* productVersion; /**< In: its version; selects the record together with productName. */
    const wchar_t* apiKey;         /**< In: its service API key. */
    /**
     * In: the hosts that URLs from the service may lead to, such as
     *
     *     L"example.com;*.example.com;shop.example.org:8443"
     *
     * or null for any host. Entries are separated by semicolons. Each is a host name, or "*." and a name,
     * which matches all subdomains of the name but not the name itself. A port other than 443 must be given.
     * Case does not matter.
     *
     * With or without a list, a URL must be written in a strict form that every URL parser reads the same
     * way: "https://", a host name, ":" and a port if there is one, and then the end or "/" and whatever may
     * follow in a URL (RFC 3986), 2,083 characters at most. A host name consists of labels of ASCII letters,
     * digits and inner hyphens, separated by dots; its last label is not a number, so IP addresses are
     * refused. Internationalized names are written as in the DNS ("xn--...").
     *
     * If the download URL of a check, or the purchase URL of the chosen offer, is not like this, it is not
     * opened, and the outcome is PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS.
     */
    const wchar_t* trustedHosts;
    /** In: a bitwise OR of ProductServicesOptions flags. */
    uint32_t options;
    /**
     * In: the time in milliseconds that all transfers of the call may take together, including the search for
     * a proxy. 0 means 30 seconds, PRODUCT_SERVICES_NO_TIME_LIMIT no limit. Time while a window is open does
     * not count.
     *
     * Windows resolves host names on the calling thread, and the limit does not interrupt that.
     */
    uint32_t timeLimitMs;
    /** In: a flag that the host may set to a value other than 0, on any thread, to end the transfers of the
     * call. It is read several times a second. It does not close an open window. May be null. */
    const volatile uint32_t* cancelFlag;
    /** In: the buffer for the text that ProductServicesOutcome describes. Null if you do not want the text.
     */
    wchar_t* resultText;
    /** In: the capacity of the buffer in wchar_t, including the terminating NUL. */
    uint32_t resultTextCapacity;
    /** Out: the ProductServicesResultCode that the call reported, which is possible with the outcomes
     * NEWER_RELEASE, UP_TO_DATE, BROWSER_OPENED, USER_QUIT, NO_PRODUCT_RECORD and REFUSED; otherwise
     * PRODUCT_SERVICES_NO_RESULT. */
    uint32_t resultCode;
    /** Out: 1 if the text did not fit into the buffer and was truncated, otherwise 0. Surrogate pairs are not
     * split. */
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
 * Without PRODUCT_SERVICES_OPTION_QUIET, a message box tells the user that the product is up to date
 * (UP_TO_DATE), or that there is no connection (REFUSED, UNREACHABLE, TIMED_OUT). The host has to report
 * every other outcome itself.
 */
ProductServicesOutcome PRODUCT_SERVICES_CALL
GuardedCheckForUpdates(PRODUCT_SERVICES_INOUT_OPT GuardedCallParams* params);

/** Shows the upgrade center if the service has offers. The host has to report every other outcome itself. */
ProductServicesOutcome PRODUCT_SERVICES_CALL
GuardedUpgrade(PRODUCT_SERVICES_INOUT_OPT GuardedCallParams* params);

/**
 * Returns the calls that an administrator has disabled, as a bitwise OR of ProductServicesDisabledCalls
 * flags. Call this before you show the commands for them. The outcome of a disabled call is
 * PRODUCT_SERVICES_OUTCOME_DISABLED_BY_POLICY.
 *
 * The policy consists of the values DisableUpdateCheck and DisableUpgradeCenter (DWORD 1) in
 * Software\\Policies\<maker>\<package_id>. Each is read from HKEY_LOCAL_MACHINE or, if it does not exist
 * there, from HKEY_CURRENT_USER, every time that this is called. Any thread may call this at any time.
 */
uint32_t PRODUCT_SERVICES_CALL GetDisabledCalls(void);

/**
 * Returns how many milliseconds a host should wait after its start before it makes a quiet check, so that
 * computers that start at the same time do not query the service at the same time. The delay is less than two
 * minutes and always the same on one computer. Any thread may call this at any time.
 */
uint32_t PRODUCT_SERVICES_CALL GetStartCheckDelay(void);

#ifdef __cplusplus
}
#endif

#endif
