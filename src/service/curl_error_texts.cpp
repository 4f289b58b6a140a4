#include "service/curl_error_texts.h"

namespace product_services {
namespace {

struct CurlErrorText
{
    int code;
    const wchar_t* text;
};

// The codes are numbers, because libcurl's versions use different names for codes that are no longer
// returned.
constexpr CurlErrorText CurlErrorTexts[]{
    // clang-format off
    {1, L"The URL you passed to libcurl used a protocol that this libcurl does not support."},
    {2, L"Very early initialization code failed. This is likely to be an internal error or "
        L"problem, or a resource problem where something fundamental couldn't get done at init "
        L"time."},
    {3, L"The URL was not properly formatted."},
    {4, L"A requested feature, protocol or option was not found built-in in this libcurl due to a "
        L"build-time decision. This means that a feature or option was not enabled or explicitly "
        L"disabled when libcurl was built and in order to get it to function you have to get a "
        L"rebuilt libcurl."},
    {5, L"Couldn't resolve proxy. The given proxy host could not be resolved."},
    {6, L"Couldn't resolve host. The given remote host was not resolved."},
    {7, L"Failed to connect() to host or proxy."},
    {9, L"We were denied access to the resource given in the URL. For FTP, this occurs while "
        L"trying to change to the remote directory."},
    {16, L"A problem was detected in the HTTP2 framing layer. This is somewhat generic and can be "
        L"one out of several problems, see the error buffer for details."},
    {18, L"A file transfer was shorter or larger than expected. This happens when the server first "
        L"reports an expected transfer size, and then delivers data that doesn't match the "
        L"previously given size."},
    {21, L"When sending custom \"QUOTE\" commands to the remote server, one of the commands returned "
        L"an error code that was 400 or higher (for FTP) or otherwise indicated unsuccessful "
        L"completion of the command."},
    {22, L"This is returned if CURLOPT_FAILONERROR is set TRUE and the HTTP server returns an error"
        L" code that is >= 400."},
    {23, L"An error occurred when writing received data to a local file, or an error was returned "
        L"to libcurl from a write callback."},
    {25, L"Failed starting the upload. For FTP, the server typically denied the STOR command. The "
        L"error buffer usually contains the server's explanation for this."},
    {26, L"There was a problem reading a local file or an error returned by the read callback."},
    {27, L"A memory allocation request failed. This is serious badness and things are severely "
        L"screwed up if this ever occurs."},
    {28, L"Operation timeout. The specified time-out period was reached according to the "
        L"conditions."},
    {33, L"The server does not support or accept range requests."},
    {34, L"This is an odd error that mainly occurs due to internal confusion."},
    {35, L"A problem occurred somewhere in the SSL/TLS handshake. You really want the error buffer "
        L"and read the message there as it pinpoints the problem slightly more. Could be "
        L"certificates (file formats, paths, permissions), passwords, and others."},
    {36, L"The download could not be resumed because the specified offset was out of the file "
        L"boundary."},
    {37, L"A file given with FILE:// couldn't be opened. Most likely because the file path doesn't "
        L"identify an existing file. Did you check file permissions?"},
    {41, L"Function not found. A required zlib function was not found."},
    {42, L"Aborted by callback. A callback returned \"abort\" to libcurl."},
    {43, L"Internal error. A function was called with a bad parameter."},
    {45, L"Interface error. A specified outgoing interface could not be used. Set which interface "
        L"to use for outgoing connections' source IP address with CURLOPT_INTERFACE."},
    {47, L"Too many redirects. When following redirects, libcurl hit the maximum amount. Set your "
        L"limit with CURLOPT_MAXREDIRS."},
    {48, L"An option passed to libcurl is not recognized/known. Refer to the appropriate "
        L"documentation. This is most likely a problem in the program that uses libcurl. The error"
        L" buffer might contain more specific information about which exact option it concerns."},
    {50, L"These error codes will never be returned. They were used in an old libcurl version and "
        L"are currently unused."},
    {52, L"Nothing was returned from the server, and under the circumstances, getting nothing is "
        L"considered an error."},
    {53, L"The specified crypto engine wasn't found."},
    {54, L"Failed setting the selected SSL crypto engine as default!"},
    {55, L"Failed sending network data."},
    {56, L"Failure with receiving network data."},
    {58, L"problem with the local client certificate."},
    {59, L"Couldn't use specified cipher."},
    {60, L"The remote server's SSL certificate or SSH md5 fingerprint was deemed not OK. This error"
        L" code has been unified with CURLE_SSL_CACERT since 7.62.0. Its previous value was 51."},
    {61, L"Unrecognized transfer encoding."},
    {63, L"Maximum file size exceeded."},
    {64, L"Requested FTP SSL level failed."},
    {65, L"When doing a send operation curl had to rewind the data to retransmit, but the rewinding"
        L" operation failed."},
    {66, L"Initiating the SSL Engine failed."},
    {67, L"The remote server denied curl to login"},
    {70, L"Out of disk space on the server."},
    {73, L"File already exists and will not be overwritten."},
    {75, L"Character conversion failed."},
    {76, L"Caller must register conversion callbacks."},
    {77, L"Problem with reading the SSL CA cert (path? access rights?)"},
    {78, L"The resource referenced in the URL does not exist."},
    {79, L"An unspecified error occurred during the SSH session."},
    {80, L"Failed to shut down the SSL connection."},
    {81, L"Socket is not ready for send/recv wait till it's ready and try again. This return code "
        L"is only returned from curl_easy_recv and curl_easy_send"},
    {82, L"Failed to load CRL file"},
    {83, L"Issuer check failed"},
    {88, L"Chunk callback reported error."},
    {89, L"(For internal use only, will never be returned by libcurl) No connection available, the "
        L"session will be queued."},
    {90, L"Failed to match the pinned key specified with CURLOPT_PINNEDPUBLICKEY."},
    {91, L"Status returned failure when asked with CURLOPT_SSL_VERIFYSTATUS."},
    {92, L"Stream error in the HTTP/2 framing layer."},
    {93, L"An API function was called from inside a callback."},
    // clang-format on
};

} // namespace

const wchar_t* FindCurlErrorText(CURLcode code)
{
    for (const CurlErrorText& entry : CurlErrorTexts) {
        if (entry.code == code) {
            return entry.text;
        }
    }
    return nullptr;
}

} // namespace product_services
