/** @file
 * Whether a downloaded file is the maker's own. In ProductServicesGuard.dll, with the guarded calls.
 *
 * @since 1.0, all that is here.
 */
#ifndef PRODUCT_SERVICES_PUBLISHER_H
#define PRODUCT_SERVICES_PUBLISHER_H

#include <stddef.h>
#include <stdint.h>

/** What VerifyPublisher found. Only one of them is a reason to start the file. */
enum ProductServicesPublisher
{
    /** The file could not be read or verified: missing, a folder, in use, no memory, an empty argument. */
    PRODUCT_SERVICES_PUBLISHER_UNREADABLE = 0,
    /** The file has no signature, or none that Windows can read. */
    PRODUCT_SERVICES_PUBLISHER_NOT_SIGNED = 1,
    /** The file was changed after it was signed. */
    PRODUCT_SERVICES_PUBLISHER_CHANGED = 2,
    /** Windows does not trust the signature: the issuer is unknown, the certificate has expired and no time
     *  stamp says that the file was signed before, it is revoked, it is not for programs, and so on. */
    PRODUCT_SERVICES_PUBLISHER_NOT_TRUSTED = 3,
    /** Windows trusts the signature, but it is somebody else's. */
    PRODUCT_SERVICES_PUBLISHER_ANOTHER = 4,
    /** All is as with TRUSTED, but whether a certificate is revoked could not be found out. */
    PRODUCT_SERVICES_PUBLISHER_REVOCATION_UNKNOWN = 5,
    /** The file is signed by the publisher, unchanged, and Windows trusts the signature. Not 0 and not a
     *  number of the other outcomes, so that a forgotten or mistaken comparison does not mean it. */
    PRODUCT_SERVICES_PUBLISHER_TRUSTED = 100
};

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Verifies the signature within a file (Authenticode) and compares its signer with the publisher. Shows no
 * window, and runs nothing of the file. Returns a ProductServicesPublisher; compare it with TRUSTED.
 *
 * path is a path of a drive or a share, absolute or relative to the working directory, of any length; one
 * that begins with \\?\ is taken as it is.
 *
 * publisher is the name that Windows shows for the signer: the common name of the certificate's subject. It
 * is compared exactly: case, blanks and all. A name is as good as the authorities that Windows trusts; it
 * says nothing of which program or which version the file is.
 *
 * text receives a sentence that says what was found, and with ANOTHER whose signature it is. text and
 * textCapacity are as in GuardedCall.
 *
 * Revocation: Windows asks the issuers of all certificates but the root, over the network, which may take
 * some twenty seconds; so call from a thread that no window waits for. Any thread will do. An answer that
 * Windows has kept serves until it expires. Where there is neither, offline or behind a firewall, the
 * outcome is REVOCATION_UNKNOWN, whatever the user's settings let pass: try again later, or let the user
 * decide, but do not go on by yourself, since whoever is on the way can suppress the answer. A user or
 * administrator can switch the check of revocation off for all programs; then it is not made here either.
 * Wine checks neither revocation nor what a certificate is for.
 *
 * The file is opened once, for reading, and verified through that handle; nobody can write to it, replace or
 * delete it meanwhile. Between the return and the start somebody could. So do one of these:
 * - open the file before the call with CreateFileW, GENERIC_READ and FILE_SHARE_READ alone, and close that
 *   handle only when the process is started;
 * - download into a folder that only this user, or for a program that runs elevated only an administrator,
 *   can write to, as can be said of all folders above it.
 * In either case give a whole path, start the very path that was verified, and have nothing else in its
 * folder: a program may load libraries that lie beside it.
 */
uint32_t VerifyPublisher(const wchar_t* path, const wchar_t* publisher, wchar_t* text, uint32_t textCapacity);

#ifdef __cplusplus
}
#endif

#endif
