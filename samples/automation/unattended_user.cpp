#include "unattended_user.h"

#include <automation.h>

#include <atomic>
#include <cstdio>
#include <set>
#include <thread>

namespace {

constexpr int OfferListId = 1031;
constexpr int HeadingId = 1021;

void BuyOrLeave(HWND center, HWND list, const UnattendedUser& user)
{
    PrintLine(L"upgrade center: " + automation::ControlText(center, HeadingId));
    for (const auto& row : automation::ListRows(list, 2)) {
        PrintLine(L"  offer: " + row[0] + L" " + row[1]);
    }
    const int button = user.buys > 0 ? IDOK : IDCANCEL;
    if (user.buys > 0) {
        automation::SelectRow(list, user.buys - 1);
    }
    Sleep(static_cast<DWORD>(user.looksMs));
    PrintLine(L"  pressing: " + automation::ControlText(center, button));
    automation::Press(center, button);
}

void Answer(HWND dialog, const UnattendedUser& user)
{
    if (HWND list = GetDlgItem(dialog, OfferListId)) {
        BuyOrLeave(dialog, list, user);
        return;
    }
    PrintLine(
        L"message box \"" + automation::WindowText(dialog) + L"\": " + automation::MessageBoxText(dialog));
    Sleep(static_cast<DWORD>(user.looksMs));
    automation::Press(dialog, IDOK);
}

} // namespace

void WithUnattendedUser(const UnattendedUser& user, const std::function<void()>& work)
{
    // Windows' part of a process is made on first use: here, before the library is loaded meanwhile. Under
    // Wine each could wait for the other.
    automation::VisibleDialogs(GetCurrentThreadId());
    std::atomic<bool> isDone = false;
    std::thread thread([&, threadId = GetCurrentThreadId()] {
        std::set<HWND> answered;
        while (!isDone) {
            for (HWND dialog : automation::VisibleDialogs(threadId)) {
                if (answered.insert(dialog).second) {
                    Answer(dialog, user);
                }
            }
            Sleep(20);
        }
    });
    work();
    isDone = true;
    thread.join();
}

void PrintLine(const std::wstring& line)
{
    const int size = static_cast<int>(line.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, line.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, line.data(), size, utf8.data(), length, nullptr, nullptr);
    std::printf("%s\n", utf8.c_str());
    std::fflush(stdout);
}
