/** @file
 * Guarded calls: the two calls of ProductServices.dll for hosts that cannot catch C++ exceptions, in C, C#,
 * Delphi, Go, Python or C++ of another compiler. They are in ProductServicesGuard.dll, which finds
 * ProductServices.dll in its own folder and nowhere else, loads it at the first call and keeps it.
 *
 * Whatever the service or a language file holds, a guarded call returns, with plain values, and writes no
 * further than the capacity that comes with the buffer. A second call while one runs, from whatever thread,
 * is refused and does not disturb the first. All else is as product_services.h says: the thread, the windows,
 * and the first call that wins.
 *
 * The calls have the one calling convention of 64-bit Windows. They throw nothing.
 *
 * @since 1.0, all that is here.
 */
#ifndef PRODUCT_SERVICES_GUARDED_CALLS_H
#define PRODUCT_SERVICES_GUARDED_CALLS_H

#include "product_services/product_services.h"
#include "product_services/publisher.h"

/** How a guarded call ended. */
enum ProductServicesOutcome
{
    /** The call had nothing to report; the text is empty. */
    PRODUCT_SERVICES_NOTHING_REPORTED = 0,
    /** resultCode holds what was reported, the text its message or, with 200, the download address. */
    PRODUCT_SERVICES_REPORTED = 1,
    /** The reply made no sense, or the call failed in another way; the text is that of the error. */
    PRODUCT_SERVICES_CALL_FAILED = 2,
    /** ProductServices.dll could not be called, or another call runs; the text is a sentence that says why.
     */
    PRODUCT_SERVICES_NOT_CALLED = 3,
    /**
     * The record cannot be used, and nothing was sent. Where options or trustedHosts are to blame, the text
     * is a sentence that says why; where the record is null or too small, nothing was written.
     */
    PRODUCT_SERVICES_BAD_RECORD = 4,
    /**
     * The service gave an address that does not lead to one of trustedHosts. It was not opened and not
     * reported; the text is the address. Do not open it.
     */
    PRODUCT_SERVICES_UNTRUSTED_ADDRESS = 5,
    /** A message was not shown, since the check is quiet; the text is the message. */
    PRODUCT_SERVICES_MESSAGE_WITHHELD = 6
};

/** What GuardedCall::options may hold, added up. */
enum ProductServicesOption
{
    /**
     * The check shows no message box and makes no sound, for checks that the user has not asked for. For
     * GuardedCheckForUpdates alone.
     */
    PRODUCT_SERVICES_QUIET = 1,
    /**
     * The upgrade center is scaled as the windows of the host are, which leaves its picture small on screens
     * of more than 100 %. Without this the system enlarges the window as a whole.
     */
    PRODUCT_SERVICES_HOST_SCALING = 2
};

/** The record of a guarded call, which the host owns with all that it points to. Zero it, then fill it in. */
typedef struct GuardedCall
{
    /** In: sizeof(GuardedCall). Members behind it are not read: an older host's record is shorter. */
    uint32_t size;
    /** In: as in HostContext, like the three texts; null reads as an empty text. */
    int32_t languageId;
    const wchar_t* productName;    /**< In: display name of the calling product, as in HostContext. */
    const wchar_t* productVersion; /**< In: its version text, as in HostContext. */
    const wchar_t* apiKey;         /**< In: its service API key, as in HostContext. */
    /** In: the buffer for the text. Null: the text is not wanted. */
    wchar_t* text;
    /** In: how many wchar_t the buffer holds, the terminating NUL included. */
    uint32_t textCapacity;
    /** Out: a ProductServicesResultCode where the outcome is PRODUCT_SERVICES_REPORTED, else 0xFFFFFFFF. */
    uint32_t resultCode;
    /** Out: 1 where the text was longer than the buffer and was cut, at a whole character; else 0. */
    uint32_t isTextCut;
    /** In: a sum of ProductServicesOption. Not read of a record without trustedHosts. */
    uint32_t options;
    /**
     * In: the hosts that an address of the service may lead to, such as
     *
     *     L"example.com;*.example.com;shop.example.org:8443"
     *
     * or null for any. Entries are separated by semicolons; each is a name, or "*." and a name for all names
     * below it but not itself, and a port where that is not 443. Upper and lower case are the same.
     *
     * An address is trusted where it is https and leads to an entry's host and port, and is in its plain
     * form, which all readers of addresses read alike: "https://", a name, ":" and a port or nothing, and
     * then the end or "/" and whatever may follow in an address (RFC 3986), 2,083 characters at most. A name
     * is labels of ASCII letters, digits and inner hyphens with single dots between, of which the last is no
     * number: an IP address is never trusted. Names of other scripts are written as in the DNS ("xn--...").
     *
     * What is not trusted ends the call with PRODUCT_SERVICES_UNTRUSTED_ADDRESS: the download address of a
     * check, and the purchase address of a chosen offer, which is then not handed to the shell.
     */
    const wchar_t* trustedHosts;
} GuardedCall;

/** What UseWindowsProxy found. */
enum ProductServicesProxy
{
    /** Windows has no proxy for the service, or none that can be reached; nothing was changed. */
    PRODUCT_SERVICES_PROXY_NONE = 0,
    /** The proxy was taken over; the text is its address. */
    PRODUCT_SERVICES_PROXY_TAKEN = 1,
    /** https_proxy or all_proxy is set already; nothing was changed. */
    PRODUCT_SERVICES_PROXY_KEPT = 2,
    /** The address or the settings could not be read; nothing was changed, and the text says why. */
    PRODUCT_SERVICES_PROXY_FAILED = 3
};

static_assert(offsetof(GuardedCall, text) == 32, "GuardedCall layout");
static_assert(offsetof(GuardedCall, trustedHosts) == 56, "GuardedCall layout");
static_assert(sizeof(GuardedCall) == 64, "GuardedCall layout");

#ifdef __cplusplus
extern "C" {
#endif

/** CheckForUpdates, guarded. Returns a ProductServicesOutcome. */
uint32_t GuardedCheckForUpdates(GuardedCall* call);

/** Upgrade, guarded. Returns a ProductServicesOutcome. */
uint32_t GuardedUpgrade(GuardedCall* call);

/**
 * Takes over the proxy that the user's Windows settings name, for this process: sets the environment
 * variables https_proxy and no_proxy, which the library's transfers read. They reach every other libcurl of
 * the process, and the processes that it starts. A variable that is set already stays. Returns a
 * ProductServicesProxy. No other call does this by itself.
 *
 * serviceAddress is the address of the maker's service, https://host[:port][/path] in ASCII, such as
 * L"https://services.example.com"; another form is PRODUCT_SERVICES_PROXY_FAILED. Windows' exceptions are
 * matched against its host and port as Windows does: an entry is [scheme://]host[:port], the host the whole
 * name, with * for any characters and ? for one, or `<local>` for names without a dot. no_proxy becomes
 * that host, or is left unset; where it is set already and Windows excepts the service, the result is
 * PRODUCT_SERVICES_PROXY_NONE. Proxies are [protocol=][http[s]://]host[:port], for https or for all; the
 * port is 80 (443 after https://) where none is named. SOCKS is not taken.
 *
 * A configuration script is asked about the address, within Windows' own time-outs. The first of its proxies
 * that accepts a connection is taken; each address of each proxy is tried for two seconds, beside the time
 * to look up its name. Where none accepts one, the service is asked directly: PRODUCT_SERVICES_PROXY_NONE. A
 * script that was detected on the network gets no sign-on of the user; one that the user has configured
 * does.
 *
 * Null: scripts and detection are left aside, and the exceptions are translated as far as no_proxy can say
 * them.
 *
 * After PRODUCT_SERVICES_PROXY_TAKEN, a further call is PRODUCT_SERVICES_PROXY_KEPT. To read the settings
 * anew, first clear what it has set: https_proxy, and no_proxy (SetEnvironmentVariableW with null). A proxy
 * that demands Windows' own sign-on (407) is not passed: calls then end as without internet, with 940 or a
 * box.
 *
 * text and textCapacity are as in GuardedCall. One thread at a time.
 */
uint32_t UseWindowsProxy(const wchar_t* serviceAddress, wchar_t* text, uint32_t textCapacity);

#ifdef __cplusplus
}
#endif

#endif
