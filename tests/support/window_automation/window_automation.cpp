#include "window_automation.h"

#include <commctrl.h>
#include <ios>

namespace window_automation {
namespace {

BOOL CALLBACK AddVisibleDialog(HWND window, LPARAM dialogs)
{
    wchar_t className[16];
    if (IsWindowVisible(window) && GetClassNameW(window, className, 16) && !lstrcmpW(className, L"#32770")) {
        reinterpret_cast<std::vector<HWND>*>(dialogs)->push_back(window);
    }
    return TRUE;
}

std::wstring ItemText(HWND list, int row, int column)
{
    std::wstring text(16384, L'\0');
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text.data();
    item.cchTextMax = static_cast<int>(text.size());
    const LRESULT length =
        SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

} // namespace

bool WaitFor(const std::function<bool()>& condition, DWORD timeoutMs)
{
    constexpr DWORD PollMs = 10;
    for (const ULONGLONG end = GetTickCount64() + timeoutMs; !condition(); Sleep(PollMs)) {
        if (GetTickCount64() > end) {
            return false;
        }
    }
    return true;
}

std::vector<HWND> VisibleDialogs(DWORD threadId)
{
    std::vector<HWND> dialogs;
    EnumThreadWindows(threadId, AddVisibleDialog, reinterpret_cast<LPARAM>(&dialogs));
    return dialogs;
}

std::wstring WindowText(HWND window)
{
    std::wstring text(static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
    const LRESULT length =
        SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::wstring ControlText(HWND dialog, int id)
{
    return WindowText(GetDlgItem(dialog, id));
}

std::vector<std::vector<std::wstring>> ListRows(HWND list, int columns)
{
    std::vector<std::vector<std::wstring>> rows(
        static_cast<std::size_t>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0)));
    for (int row = 0; row < static_cast<int>(rows.size()); ++row) {
        for (int column = 0; column < columns; ++column) {
            rows[static_cast<std::size_t>(row)].push_back(ItemText(list, row, column));
        }
    }
    return rows;
}

std::wstring ColumnHeading(HWND list, int column)
{
    std::wstring text(256, L'\0');
    LVCOLUMNW heading{};
    heading.mask = LVCF_TEXT;
    heading.pszText = text.data();
    heading.cchTextMax = static_cast<int>(text.size());
    SendMessageW(list, LVM_GETCOLUMNW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&heading));
    text.resize(text.find(L'\0'));
    return text;
}

int ColumnAlignment(HWND list, int column)
{
    LVCOLUMNW heading{};
    heading.mask = LVCF_FMT;
    SendMessageW(list, LVM_GETCOLUMNW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&heading));
    return heading.fmt & LVCFMT_JUSTIFYMASK;
}

void SelectRow(HWND list, int row)
{
    // Give the list the focus, as a click does, so that the selection is visible.
    SendMessageW(GetParent(list), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(list), TRUE);
    LVITEMW item{};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = item.stateMask;
    SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

HWND FocusedWindowOfThread(HWND window)
{
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    return info.hwndFocus;
}

testing::AssertionResult WaitForFocus(HWND control)
{
    const bool isFocused = WaitFor([control] { return FocusedWindowOfThread(control) == control; }, 3000);
    return testing::AssertionResult(isFocused)
           << "the control with the id " << GetDlgCtrlID(FocusedWindowOfThread(control)) << " has the focus";
}

testing::AssertionResult WaitForPixelColor(HWND window, POINT at, COLORREF color, int width)
{
    const HDC deviceContext = GetDC(window);
    COLORREF seen = CLR_INVALID;
    int tried = 0;
    const auto hasColor = [&] {
        seen = GetPixel(deviceContext, at.x + tried % width, at.y);
        ++tried;
        return seen == color;
    };
    const bool isFound = WaitFor(hasColor, 3000);
    ReleaseDC(window, deviceContext);
    return testing::AssertionResult(isFound)
           << "a pixel has the color " << std::hex << seen << " instead of " << color << " (0xBBGGRR)";
}

void ClickButton(HWND dialog, int id)
{
    // A button sends the same command. BM_CLICK does nothing while the dialog is losing or gaining
    // activation.
    PostMessageW(
        dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(dialog, id)));
}

} // namespace window_automation
