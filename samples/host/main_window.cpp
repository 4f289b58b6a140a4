#include "main_window.h"

#include "daily_check.h"
#include "resource.h"
#include "update_calls.h"

#include <windows.h>

#include <shellapi.h>

#include <thread>

using product_services::CallResult;

namespace {

// The check at start has ended.
constexpr UINT WM_CHECKED_AT_START = WM_APP;

class MainWindow
{
public:
    explicit MainWindow(bool checksAtOnce) : m_checksAtOnce(checksAtOnce) {}

    void Run();

private:
    static INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

    INT_PTR HandleMessage(UINT message, WPARAM wParam);
    void Initialize();
    void SetIcon(WPARAM kind, int metric);
    void UpdateMenu(HMENU menu) const;
    void Close();

    void StartCheck();
    void StopCheckAtStart();
    void ShowCheckAtStart();

    void CallLibrary(Call call);
    void Show(const Notice& notice);
    void OfferDownload(const Notice& notice);
    void ShowStatus(const std::wstring& text);

    bool m_checksAtOnce;
    HWND m_dialog = nullptr;
    bool m_isCalling = false;
    CallResult m_checkedAtStart; // the thread's until it has ended
    std::jthread m_checkAtStart;
};

// A dialog as the window: with the DPI awareness of the manifest, Windows scales it on each monitor.
void MainWindow::Run()
{
    DialogBoxParamW(
        GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_MAIN_WINDOW), nullptr, DialogProc,
        reinterpret_cast<LPARAM>(this));
}

INT_PTR CALLBACK MainWindow::DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(dialog, DWLP_USER, lParam);
        reinterpret_cast<MainWindow*>(lParam)->m_dialog = dialog;
    }
    auto* const window = reinterpret_cast<MainWindow*>(GetWindowLongPtrW(dialog, DWLP_USER));
    return window ? window->HandleMessage(message, wParam) : FALSE;
}

INT_PTR MainWindow::HandleMessage(UINT message, WPARAM wParam)
{
    switch (message) {
    case WM_INITDIALOG:
        Initialize();
        StartCheck();
        return TRUE;
    case WM_CHECKED_AT_START:
        ShowCheckAtStart();
        return TRUE;
    case WM_COMMAND:
        if (LOWORD(wParam) == IDM_CHECK) {
            CallLibrary(Call::Check);
        } else if (LOWORD(wParam) == IDM_UPGRADE) {
            CallLibrary(Call::Upgrade);
        }
        return TRUE;
    case WM_INITMENUPOPUP:
        UpdateMenu(reinterpret_cast<HMENU>(wParam));
        return TRUE;
    case WM_CLOSE:
        Close();
        return TRUE;
    default:
        return FALSE;
    }
}

void MainWindow::Initialize()
{
    SetWindowTextW(m_dialog, (ProductTitle() + L" \x2013 sample host").c_str());
    SetIcon(ICON_BIG, SM_CXICON);
    SetIcon(ICON_SMALL, SM_CXSMICON);
}

void MainWindow::SetIcon(WPARAM kind, int metric)
{
    const int size = GetSystemMetrics(metric);
    const HANDLE icon = LoadImageW(
        GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_HOST), IMAGE_ICON, size, size, LR_DEFAULTCOLOR);
    SendMessageW(m_dialog, WM_SETICON, kind, reinterpret_cast<LPARAM>(icon));
}

void MainWindow::UpdateMenu(HMENU menu) const
{
    const UINT state = m_isCalling ? MF_GRAYED : MF_ENABLED;
    EnableMenuItem(menu, IDM_CHECK, MF_BYCOMMAND | state);
    EnableMenuItem(menu, IDM_UPGRADE, MF_BYCOMMAND | state);
    if (product_services::IsUpdateCheckDisabled()) {
        DeleteMenu(menu, IDM_CHECK, MF_BYCOMMAND);
    }
    if (product_services::IsUpgradeCenterDisabled()) {
        DeleteMenu(menu, IDM_UPGRADE, MF_BYCOMMAND);
    }
}

void MainWindow::Close()
{
    if (m_isCalling) {
        return; // the call returns to this window
    }
    ShowWindow(m_dialog, SW_HIDE);
    StopCheckAtStart();
    EndDialog(m_dialog, 0);
}

void MainWindow::StartCheck()
{
    ShowStatus(m_checksAtOnce ? L"Checking for updates\x2026" : L"Ready.");
    m_checkAtStart = std::jthread([this](const std::stop_token& stopToken) {
        if (!m_checksAtOnce && !WaitForDailyCheck(stopToken)) {
            return;
        }
        m_checkedAtStart = MakeCall(Call::CheckAtStart, stopToken);
        if (!m_checksAtOnce && m_checkedAtStart.outcome != product_services::Outcome::Cancelled) {
            RememberDailyCheck();
        }
        PostMessageW(m_dialog, WM_CHECKED_AT_START, 0, 0);
    });
}

// The call ends within a fraction of a second, unless Windows is resolving a host name.
void MainWindow::StopCheckAtStart()
{
    if (m_checkAtStart.joinable()) {
        m_checkAtStart.request_stop();
        m_checkAtStart.join();
    }
}

// The user has not asked, so no message is shown.
void MainWindow::ShowCheckAtStart()
{
    if (!m_checkAtStart.joinable()) {
        return; // it was stopped
    }
    m_checkAtStart.join();
    const Notice notice = MakeNotice(Call::CheckAtStart, m_checkedAtStart);
    ShowStatus(
        notice.text + (notice.downloadUrl.empty() ? L"" : L" Choose Check for updates in the Help menu."));
}

// The library's windows have no owner, so this one stays enabled while they are open: it refuses a second
// call and does not close.
void MainWindow::CallLibrary(Call call)
{
    if (m_isCalling) {
        return;
    }
    StopCheckAtStart();
    m_isCalling = true;
    const CallResult result = MakeCall(call);
    m_isCalling = false;
    Show(MakeNotice(call, result));
}

void MainWindow::Show(const Notice& notice)
{
    ShowStatus(notice.text);
    if (!notice.downloadUrl.empty()) {
        OfferDownload(notice);
    } else if (notice.kind != Notice::Kind::StatusOnly) {
        const UINT icon = notice.kind == Notice::Kind::Warning ? MB_ICONWARNING : MB_ICONINFORMATION;
        MessageBoxW(m_dialog, notice.text.c_str(), ProductTitle().c_str(), MB_OK | icon);
    }
}

// The library reports only https URLs on trusted hosts.
void MainWindow::OfferDownload(const Notice& notice)
{
    const std::wstring question = notice.text + L" Open its page in your browser?\n\n" + notice.downloadUrl;
    if (MessageBoxW(m_dialog, question.c_str(), ProductTitle().c_str(), MB_YESNO | MB_ICONQUESTION) !=
        IDYES) {
        return;
    }
    const HINSTANCE started =
        ShellExecuteW(m_dialog, nullptr, notice.downloadUrl.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    if (reinterpret_cast<INT_PTR>(started) <= 32) {
        ShowStatus(L"The browser could not be opened. The page is " + notice.downloadUrl);
    }
}

void MainWindow::ShowStatus(const std::wstring& text)
{
    SetDlgItemTextW(m_dialog, IDC_STATUS, text.c_str());
}

} // namespace

void RunMainWindow(bool checksAtOnce)
{
    MainWindow(checksAtOnce).Run();
}
