#include "product_services/guarded_calls.h"

#include "bounded_text.h"
#include "library.h"
#include "text_room.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <windows.h>

namespace product_services_guard {
namespace {

// No call reports it.
constexpr std::uint32_t NoCode = 0xFFFFFFFF;

std::uint32_t End(GuardedCall& call, ProductServicesOutcome outcome, const wchar_t* text)
{
    call.isTextCut = CopyBounded(call.text, call.textCapacity, text);
    return outcome;
}

// The text of an error is UTF-8 with parts of the reply in it. Each byte makes one unit at most.
std::uint32_t EndWithError(GuardedCall& call, wchar_t* room, const char* what)
{
    constexpr std::size_t Longest = LeastRoom - 1;
    const auto bytes = static_cast<int>(std::min(std::strlen(what), Longest));
    const int units = MultiByteToWideChar(CP_UTF8, 0, what, bytes, room, bytes);
    room[units] = L'\0';
    return End(call, PRODUCT_SERVICES_CALL_FAILED, room);
}

std::uint32_t CallExport(GuardedCall& call, void (*function)(HostContext*), wchar_t* room)
{
    HostContext context{};
    context.productName = call.productName;
    context.productVersion = call.productVersion;
    context.apiKey = call.apiKey;
    context.languageId = call.languageId;
    context.resultCode = NoCode;
    context.resultText = room;
    try {
        function(&context);
    } catch (const std::exception& error) {
        return EndWithError(call, room, error.what());
    } catch (...) {
        return EndWithError(call, room, "An error without a text left the call.");
    }
    call.resultCode = context.resultCode;
    const bool isReported = context.resultCode != NoCode;
    return End(call, isReported ? PRODUCT_SERVICES_REPORTED : PRODUCT_SERVICES_NOTHING_REPORTED, room);
}

std::uint32_t Guard(GuardedCall* call, void (*Library::*function)(HostContext*))
{
    if (!call || call->size < sizeof(GuardedCall)) {
        return PRODUCT_SERVICES_BAD_RECORD;
    }
    call->resultCode = NoCode;
    wchar_t* const room = RoomForText();
    if (!room) {
        return End(*call, PRODUCT_SERVICES_NOT_CALLED, L"There is not enough memory for the text of a call.");
    }
    const Library& library = LoadProductServices();
    if (library.failure) {
        return End(*call, PRODUCT_SERVICES_NOT_CALLED, library.failure);
    }
    return CallExport(*call, library.*function, room);
}

} // namespace
} // namespace product_services_guard

using namespace product_services_guard;

std::uint32_t GuardedCheckForUpdates(GuardedCall* call)
{
    return Guard(call, &Library::checkForUpdates);
}

std::uint32_t GuardedUpgrade(GuardedCall* call)
{
    return Guard(call, &Library::upgrade);
}
