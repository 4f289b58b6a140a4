/** @file
 * Verifies that a downloaded file is signed by the expected publisher. These functions are in
 * ProductServicesGuard.dll, like the guarded calls.
 *
 * @since 1.0
 */
#ifndef PRODUCT_SERVICES_PUBLISHER_H
#define PRODUCT_SERVICES_PUBLISHER_H

#include "product_services/annotations.h"

#include <stddef.h>

/** The result of VerifyPublisher. Start the file only if it is PRODUCT_SERVICES_PUBLISHER_TRUSTED. */
typedef enum ProductServicesPublisherResult PRODUCT_SERVICES_ENUM_TYPE
{
    /** The file could not be read or verified: it was not found, is a folder, or is in use, memory ran out,
     * or an argument is empty. */
    PRODUCT_SERVICES_PUBLISHER_FILE_ERROR = 0,
    /** The file has no signature that Windows can read. */
    PRODUCT_SERVICES_PUBLISHER_NOT_SIGNED = 1,
    /** The file was modified after it was signed. */
    PRODUCT_SERVICES_PUBLISHER_FILE_MODIFIED = 2,
    /** Windows does not trust the signature: the issuer is unknown, the certificate has expired and the
     * signature has no valid timestamp, it is revoked, it is not for code signing, and so on. */
    PRODUCT_SERVICES_PUBLISHER_UNTRUSTED = 3,
    /** Windows trusts the signature, but it is another publisher's. */
    PRODUCT_SERVICES_PUBLISHER_MISMATCH = 4,
    /** Like TRUSTED, but the revocation status of a certificate could not be checked. */
    PRODUCT_SERVICES_PUBLISHER_REVOCATION_UNKNOWN = 5,
    /** The publisher has signed the file, but data was appended to it that the signature does not cover.
     * Windows accepts that by default. Only programs are checked for it. */
    PRODUCT_SERVICES_PUBLISHER_DATA_APPENDED = 6,
    /** StartVerifiedFile only: like TRUSTED, but the file could not be started. */
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
 * publishers. Shows no window, and does not run any code of the file.
 *
 * @param path The full path of the file, on a drive or a share, of any length. A relative path is resolved
 * against the working directory; a path that begins with \\?\ is used as it is.
 * @param publishers The names that you sign with, one in each line, such as L"Example Maker\nExample Maker
 * GmbH", because a renewed certificate may have another name. A name is the common name of the certificate's
 * subject. It is compared exactly, including case and spaces. The result is as reliable as the certification
 * authorities that Windows trusts, and does not say which program or which version the file is.
 * @param text Receives a sentence that describes the result; with MISMATCH, it names the signer. Null if you
 * do not want the text.
 * @param textCapacity The capacity of the buffer in wchar_t, including the terminating NUL.
 *
 * Revocation: Windows queries the issuers of all certificates except the root over the network, which may
 * take about twenty seconds, so call this from a worker thread. Windows caches an answer until it expires. If
 * an issuer cannot be reached and no answer is cached, for example offline or behind a firewall, the result
 * is REVOCATION_UNKNOWN, regardless of the user's settings. Try again later or ask the user, but do not run
 * the file on your own: an attacker on the network can block the revocation check. If a user or an
 * administrator has disabled revocation checks for all programs, there is none here either. Wine checks
 * neither revocation nor the purpose of a certificate.
 *
 * The file could be replaced after this function has returned and before you start it. StartVerifiedFile
 * verifies and starts it in one step.
 */
ProductServicesPublisherResult PRODUCT_SERVICES_CALL VerifyPublisher(
    PRODUCT_SERVICES_IN_TEXT const wchar_t* path, PRODUCT_SERVICES_IN_TEXT const wchar_t* publishers,
    PRODUCT_SERVICES_OUT_TEXT(textCapacity) wchar_t* text, uint32_t textCapacity);

/**
 * Verifies a downloaded installer as VerifyPublisher does and, if the result is TRUSTED, starts it: a program
 * (.exe) or a Windows Installer package (.msi), and nothing else.
 *
 * The file that is started is the file that was verified. It is opened once, and nobody can write to it,
 * replace it or delete it until it has been started or, for a package, until Windows Installer has exited. It
 * is started from its final path, without junctions and symbolic links. Its folder should contain nothing
 * else, because a program may load libraries from its own folder.
 *
 * @param path See VerifyPublisher.
 * @param publishers See VerifyPublisher.
 * @param arguments The command line for the program; for a package, Windows Installer gets it after the
 * package's name. May be null.
 * @param text See VerifyPublisher. With NOT_STARTED, it says why.
 * @param textCapacity See VerifyPublisher.
 *
 * Call it on a worker thread on which COM is initialised (CoInitializeEx), because the shell starts the file.
 * It returns when the file has been started, which may wait for the user's consent to elevation.
 */
ProductServicesPublisherResult PRODUCT_SERVICES_CALL StartVerifiedFile(
    PRODUCT_SERVICES_IN_TEXT const wchar_t* path, PRODUCT_SERVICES_IN_TEXT const wchar_t* publishers,
    PRODUCT_SERVICES_IN_TEXT_OPT const wchar_t* arguments,
    PRODUCT_SERVICES_OUT_TEXT(textCapacity) wchar_t* text, uint32_t textCapacity);

#ifdef __cplusplus
}
#endif

#endif
