#include "product_services/publisher.h"

#include "calls/text_copy.h"
#include "signature/locked_file.h"
#include "signature/publisher_result.h"
#include "signature/signature.h"
#include "signature/start_file.h"

#include <cstdint>
#include <exception>
#include <string>

namespace product_services_guard {
namespace {

PublisherResult VerifyFile(const LockedFile& file, const wchar_t* publishers)
{
    if (!file.handle) {
        return {PRODUCT_SERVICES_PUBLISHER_FILE_ERROR, file.error};
    }
    return EvaluateSignature(ReadSignature(file.handle.get(), file.path.c_str()), publishers);
}

bool IsEmpty(const wchar_t* text)
{
    return !text || *text == L'\0';
}

// Passes the result of `verify`, which may throw std::bad_alloc, to the host.
template <typename Function>
ProductServicesPublisherResult ReportResult(wchar_t* text, std::uint32_t textCapacity, const Function& verify)
{
    try {
        const PublisherResult result = verify();
        CopyTruncated(text, textCapacity, result.text);
        return result.status;
    } catch (const std::exception&) {
        CopyTruncated(text, textCapacity, L"Not enough memory to verify the file.");
        return PRODUCT_SERVICES_PUBLISHER_FILE_ERROR;
    }
}

PublisherResult RejectEmptyArgument()
{
    return {PRODUCT_SERVICES_PUBLISHER_FILE_ERROR, L"The path or the publisher is empty."};
}

} // namespace
} // namespace product_services_guard

using namespace product_services_guard;

ProductServicesPublisherResult PRODUCT_SERVICES_CALL
VerifyPublisher(const wchar_t* path, const wchar_t* publishers, wchar_t* text, std::uint32_t textCapacity)
{
    return ReportResult(text, textCapacity, [=] {
        if (IsEmpty(path) || IsEmpty(publishers)) {
            return RejectEmptyArgument();
        }
        return VerifyFile(LockFile(path), publishers);
    });
}

ProductServicesPublisherResult PRODUCT_SERVICES_CALL StartVerifiedFile(
    const wchar_t* path, const wchar_t* publishers, const wchar_t* arguments, wchar_t* text,
    std::uint32_t textCapacity)
{
    return ReportResult(text, textCapacity, [=] {
        if (IsEmpty(path) || IsEmpty(publishers)) {
            return RejectEmptyArgument();
        }
        // The file stays locked until it has been started.
        const LockedFile file = LockFile(path);
        const PublisherResult result = VerifyFile(file, publishers);
        return result.status == PRODUCT_SERVICES_PUBLISHER_TRUSTED ? StartFile(file, arguments) : result;
    });
}
