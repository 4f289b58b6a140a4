/** @file
 * Verifies that a downloaded file is signed by the expected publisher. In ProductServicesGuard.dll, with the
 * guarded calls.
 *
 * @since 1.0, all that is here.
 */
#ifndef PRODUCT_SERVICES_PUBLISHER_H
#define PRODUCT_SERVICES_PUBLISHER_H

#include "product_services/annotations.h"

#include <stddef.h>

/** What VerifyPublisher found. Start the file only if this is PRODUCT_SERVICES_PUBLISHER_TRUSTED. */
typedef enum ProductServicesPublisherResult PRODUCT_SERVICES_ENUM_TYPE
{
    /** The file could not be read or verified: not found, a folder, in use, out of memory, an empty argument.
     */
    PRODUCT_SERVICES_PUBLISHER_FILE_ERROR = 0,
    /** The file has no signature, or none that Windows can read. */
    PRODUCT_SERVICES_PUBLISHER_NOT_SIGNED = 1,
    /** The file was modified after it was signed. */
    PRODUCT_SERVICES_PUBLISHER_FILE_MODIFIED = 2,
    /** Windows does not trust the signature: the issuer is unknown, the certificate has expired and the
     * signature has no valid timestamp, it is revoked, it is not for code signing, and so on. */
    PRODUCT_SERVICES_PUBLISHER_UNTRUSTED = 3,
    /** Windows trusts the signature, but it is another publisher's. */
    PRODUCT_SERVICES_PUBLISHER_MISMATCH = 4,
    /** As TRUSTED, but the revocation status of a certificate could not be checked. */
    PRODUCT_SERVICES_PUBLISHER_REVOCATION_UNKNOWN = 5,
    /** The publisher has signed the file, but data was appended to it that the signature does not cover.
     * Windows accepts that by default. Only programs are checked for it. */
    PRODUCT_SERVICES_PUBLISHER_DATA_APPENDED = 6,
    /** StartVerifiedFile: all is as with TRUSTED, but the file could not be started. */
    PRODUCT_SERVICES_PUBLISHER_NOT_STARTED = 7,
    /** The file is signed by the publisher, unmodified, and Windows trusts the signature. Deliberately not 0,
     * which a zero-initialised variable or a comparison with ERROR_SUCCESS would match, and not a value of
     * any other outcome, so that comparing with the wrong constant cannot mean success. */
    PRODUCT_SERVICES_PUBLISHER_TRUSTED = 100
} ProductServicesPublisherResult;

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Verifies the signature that is embedded in a file (Authenticode) and compares its signer with the
 * publishers. Shows no window and runs nothing of the file.
 *
 * @param path The full path of the file, on a drive or a share, of any length. A relative path is resolved
 * against the working directory; a path that begins with \\?\ is used as it is.
 * @param publishers The names that you sign with, one in each line, such as L"Example Maker\nExample Maker
 * GmbH": a renewed certificate may have another name. A name is the common name of the certificate's subject
 * and is compared exactly, case and blanks included. It is as good as the authorities that Windows trusts; it
 * does not say which program or which version the file is.
 * @param text Receives a sentence that says what was found, and with MISMATCH whose signature it is. Null:
 * not wanted.
 * @param textCapacity How many wchar_t the buffer holds, the terminating NUL included.
 *
 * Revocation: Windows asks the issuers of all certificates but the root, over the network, which may take
 * some twenty seconds. So call this from a worker thread. An answer that Windows has cached serves until it
 * expires. If neither is available, offline or behind a firewall, the result is REVOCATION_UNKNOWN,
 * regardless of the user's settings. Try again later or ask the user, but do not run the file on your own: an
 * attacker on the network can block the revocation check. If a user or an administrator has switched
 * revocation checks off for all programs, none is made here either. Wine checks neither revocation nor what a
 * certificate is for.
 *
 * Between the return and the start of the file somebody could replace it. StartVerifiedFile does both in one
 * step.
 */
ProductServicesPublisherResult PRODUCT_SERVICES_CALL VerifyPublisher(
    PRODUCT_SERVICES_IN_TEXT const wchar_t* path, PRODUCT_SERVICES_IN_TEXT const wchar_t* publishers,
    PRODUCT_SERVICES_OUT_TEXT(textCapacity) wchar_t* text, uint32_t textCapacity);

/**
 * Verifies a downloaded installer as VerifyPublisher does and, if the result is TRUSTED, starts it: a program
 * (.exe) or a Windows Installer package (.msi), and nothing else.
 *
 * What is verified is what is started. The file is opened once, so that nobody can write to it, replace it or
 * delete it until it has been started, a package until Windows Installer has ended; and it is started from
 * the path where it really is, whatever junctions and links the given path has. Have nothing else in its
 * folder: a program may load libraries that lie next to it.
 *
 * @param path As for VerifyPublisher.
 * @param publishers As for VerifyPublisher.
 * @param arguments The command line for the program or, after the package's name, for Windows Installer.
 * Null: none.
 * @param text As for VerifyPublisher; with NOT_STARTED it says why.
 * @param textCapacity As for VerifyPublisher.
 *
 * Call it from a worker thread on which COM is initialised (CoInitializeEx), because the shell starts the
 * file. It returns when the file has been started, which may take until the user has agreed to its elevation.
 */
ProductServicesPublisherResult PRODUCT_SERVICES_CALL StartVerifiedFile(
    PRODUCT_SERVICES_IN_TEXT const wchar_t* path, PRODUCT_SERVICES_IN_TEXT const wchar_t* publishers,
    PRODUCT_SERVICES_IN_TEXT_OPT const wchar_t* arguments,
    PRODUCT_SERVICES_OUT_TEXT(textCapacity) wchar_t* text, uint32_t textCapacity);

#ifdef __cplusplus
}
#endif

#endif
