#include "product_services/guarded_calls.h"

#include "bounded_text.h"
#include "call_options.h"
#include "library.h"
#include "text_room.h"
#include "unscaled_windows.h"
#include "windows_calls.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <exception>
#include <windows.h>

namespace product_services_guard {
namespace {

// No call reports it.
constexpr std::uint32_t NoCode = 0xFFFFFFFF;

// A record without trustedHosts.
constexpr std::uint32_t LeastSize = offsetof(GuardedCall, trustedHosts);

std::atomic_flag isCallRunning;

// The turn of a call, which one call at a time has.
class Turn
{
public:
    Turn() : m_isTaken(!isCallRunning.test_and_set()) {}
    ~Turn()
    {
        if (m_isTaken) {
            isCallRunning.clear();
        }
    }

    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    bool IsTaken() const { return m_isTaken; }

private:
    bool m_isTaken;
};

std::uint32_t End(GuardedCall& call, ProductServicesOutcome outcome, const wchar_t* text)
{
    call.isTextCut = CopyBounded(call.text, call.textCapacity, text);
    return outcome;
}

// As End, where nothing counts that the call has reported.
std::uint32_t EndWithoutCode(GuardedCall& call, ProductServicesOutcome outcome, const wchar_t* text)
{
    call.resultCode = NoCode;
    return End(call, outcome, text);
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

HostContext ContextOf(const GuardedCall& call, wchar_t* room)
{
    HostContext context{};
    context.productName = call.productName;
    context.productVersion = call.productVersion;
    context.apiKey = call.apiKey;
    context.languageId = call.languageId;
    context.resultCode = NoCode;
    context.resultText = room;
    return context;
}

std::uint32_t EndWithReport(GuardedCall& call, const HostContext& context, const Wishes& wishes)
{
    if (wishes.refusedAddress) {
        return EndWithoutCode(call, PRODUCT_SERVICES_UNTRUSTED_ADDRESS, wishes.refusedAddress);
    }
    if (wishes.isMessageKept) {
        return EndWithoutCode(call, PRODUCT_SERVICES_MESSAGE_WITHHELD, wishes.room);
    }
    const bool isAddress = context.resultCode == PRODUCT_SERVICES_SUCCESS;
    if (isAddress && wishes.trustedHosts && !IsTrusted(context.resultText, wishes.trustedHosts)) {
        return EndWithoutCode(call, PRODUCT_SERVICES_UNTRUSTED_ADDRESS, context.resultText);
    }
    call.resultCode = context.resultCode;
    const bool isReported = context.resultCode != NoCode;
    return End(
        call, isReported ? PRODUCT_SERVICES_REPORTED : PRODUCT_SERVICES_NOTHING_REPORTED, context.resultText);
}

std::uint32_t CallExport(GuardedCall& call, void (*function)(HostContext*), Wishes& wishes)
{
    HostContext context = ContextOf(call, wishes.room);
    try {
        const WishesInForce inForce(wishes);
        function(&context);
    } catch (const std::exception& error) {
        return EndWithError(call, wishes.room, error.what());
    } catch (...) {
        return EndWithError(call, wishes.room, "An error without a text left the call.");
    }
    return EndWithReport(call, context, wishes);
}

struct GuardedExport
{
    void (*Library::*function)(HostContext*);
    std::uint32_t knownOptions;
    bool showsPicture;
};

std::uint32_t Guard(GuardedCall* call, const GuardedExport& guarded)
{
    if (!call || call->size < LeastSize) {
        return PRODUCT_SERVICES_BAD_RECORD;
    }
    const Turn turn;
    if (!turn.IsTaken()) {
        return EndWithoutCode(*call, PRODUCT_SERVICES_NOT_CALLED, L"Another call has not ended yet.");
    }
    const CallOptions options = ReadOptions(*call, guarded.knownOptions);
    if (options.problem) {
        return EndWithoutCode(*call, PRODUCT_SERVICES_BAD_RECORD, options.problem);
    }
    Wishes wishes{options.isQuiet, options.trustedHosts, RoomForText()};
    if (!wishes.room) {
        return EndWithoutCode(
            *call, PRODUCT_SERVICES_NOT_CALLED, L"There is not enough memory for the text of a call.");
    }
    const Library& library = LoadProductServices();
    if (library.failure) {
        return EndWithoutCode(*call, PRODUCT_SERVICES_NOT_CALLED, library.failure);
    }
    call->resultCode = NoCode;
    const UnscaledWindows unscaled(guarded.showsPicture && !options.hasHostScaling);
    return CallExport(*call, library.*guarded.function, wishes);
}

} // namespace
} // namespace product_services_guard

using namespace product_services_guard;

std::uint32_t GuardedCheckForUpdates(GuardedCall* call)
{
    return Guard(
        call, {&Library::checkForUpdates, PRODUCT_SERVICES_QUIET | PRODUCT_SERVICES_HOST_SCALING, false});
}

std::uint32_t GuardedUpgrade(GuardedCall* call)
{
    return Guard(call, {&Library::upgrade, PRODUCT_SERVICES_HOST_SCALING, true});
}
