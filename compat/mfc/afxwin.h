// Application object, message maps, windows and dialogs, as documented for MFC.
#pragma once

#include <afx.h>
#include <afxstat_.h>

#include <windows.h>

#include <commctrl.h>

class CCmdTarget;

/// The arguments for a handler of WM_NOTIFY; null for WM_COMMAND.
struct MessageArguments
{
    NMHDR* notification;
    LRESULT* result;
};

struct AFX_MSGMAP_ENTRY
{
    UINT nMessage; ///< WM_COMMAND or WM_NOTIFY; 0 ends the map.
    UINT nCode;
    UINT nID;
    void (*pfn)(CCmdTarget& target, const MessageArguments& arguments);
};

struct AFX_MSGMAP
{
    const AFX_MSGMAP* (*pfnGetBaseMap)();
    const AFX_MSGMAP_ENTRY* lpEntries;
};

// clang-format off
#define DECLARE_MESSAGE_MAP()                       \
protected:                                          \
    static const AFX_MSGMAP* GetThisMessageMap();   \
    const AFX_MSGMAP* GetMessageMap() const override;

#define BEGIN_MESSAGE_MAP(theClass, baseClass)                \
    const AFX_MSGMAP* theClass::GetMessageMap() const         \
    {                                                         \
        return GetThisMessageMap();                           \
    }                                                         \
    const AFX_MSGMAP* theClass::GetThisMessageMap()           \
    {                                                         \
        using ThisClass [[maybe_unused]] = theClass;          \
        using TheBaseClass = baseClass;                       \
        static constexpr AFX_MSGMAP_ENTRY entries[]{

#define ON_COMMAND(id, memberFxn)                             \
            {WM_COMMAND, BN_CLICKED, static_cast<UINT>(id),   \
             [](CCmdTarget& target, const MessageArguments&) { \
                 (static_cast<ThisClass&>(target).*(memberFxn))(); \
             }},

#define ON_BN_CLICKED(id, memberFxn) ON_COMMAND(id, memberFxn)

#define ON_NOTIFY(wNotifyCode, id, memberFxn)                                      \
            {WM_NOTIFY, static_cast<UINT>(wNotifyCode), static_cast<UINT>(id),     \
             [](CCmdTarget& target, const MessageArguments& arguments) {           \
                 (static_cast<ThisClass&>(target).*(memberFxn))(arguments.notification, arguments.result); \
             }},

#define END_MESSAGE_MAP()                                     \
            {0, 0, 0, nullptr}};                              \
        static constexpr AFX_MSGMAP map{&TheBaseClass::GetThisMessageMap, entries}; \
        return &map;                                          \
    }
// clang-format on

class CCmdTarget : public CObject
{
    DECLARE_DYNAMIC(CCmdTarget)

protected:
    /// Calls the handler for the message that is found first, from the most derived class to its bases.
    /// Returns false if there is none.
    bool HandleMessage(UINT message, UINT code, UINT id, const MessageArguments& arguments);

    static const AFX_MSGMAP* GetThisMessageMap();
    virtual const AFX_MSGMAP* GetMessageMap() const;
};

class CWinApp : public CCmdTarget
{
    DECLARE_DYNAMIC(CWinApp)

public:
    CWinApp();

    HICON LoadIcon(UINT nIDResource) const;
};

CWinApp* AFXAPI AfxGetApp();
HINSTANCE AFXAPI AfxGetResourceHandle();

class CDataExchange;

#define MLF_SHOWONIDLE 0x0002

class CWnd : public CCmdTarget
{
    DECLARE_DYNAMIC(CWnd)

public:
    CWnd() = default;
    ~CWnd() override;

    HWND m_hWnd = nullptr;

    BOOL SubclassWindow(HWND hWnd);
    virtual BOOL DestroyWindow();

    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    BOOL ShowWindow(int nCmdShow);
    void UpdateWindow();
    void Invalidate(BOOL bErase = TRUE);
    void SetRedraw(BOOL bRedraw = TRUE);
    void CenterWindow();
    DWORD GetStyle() const;
    BOOL ModifyStyleEx(DWORD dwRemove, DWORD dwAdd, UINT nFlags = 0);
    HICON SetIcon(HICON hIcon, BOOL bBigIcon);
    void SetWindowText(LPCTSTR lpszString);
    void SetDlgItemText(int nID, LPCTSTR lpszString);

    BOOL UpdateData(BOOL bSaveAndValidate = TRUE);

    int RunModalLoop(DWORD dwFlags = 0);
    virtual BOOL ContinueModal();
    virtual void EndModalLoop(int nResult);

    virtual BOOL PreTranslateMessage(MSG* pMsg);

protected:
    virtual void DoDataExchange(CDataExchange* pDX);
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    virtual BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult);
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    virtual BOOL OnCommand(WPARAM wParam, LPARAM lParam);
    virtual BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT* pResult);
    virtual void ShowOnIdle();

    bool m_inModalLoop = false;
    int m_modalResult = 0;

private:
    static CWnd* FromHandlePermanent(HWND window);
    static LRESULT CALLBACK SubclassProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void Detach();

    WNDPROC m_pfnSuper = nullptr;

    DECLARE_MESSAGE_MAP()
};

class CDialog : public CWnd
{
    DECLARE_DYNAMIC(CDialog)

public:
    explicit CDialog(UINT nIDTemplate, CWnd* pParentWnd = nullptr);

    virtual INT_PTR DoModal();
    void EndDialog(int nResult);

    BOOL PreTranslateMessage(MSG* pMsg) override;
    virtual BOOL OnInitDialog();

protected:
    virtual void OnOK();
    virtual void OnCancel();
    void ShowOnIdle() override;

private:
    static INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
    BOOL InitDialog(HWND dialog);

    UINT m_templateId;
    CWnd* m_parent;
    bool m_focusesFirstControl = false;

    DECLARE_MESSAGE_MAP()
};

class CDataExchange
{
public:
    CDataExchange(CWnd* pDlgWnd, BOOL bSaveAndValidate)
        : m_bSaveAndValidate(bSaveAndValidate), m_pDlgWnd(pDlgWnd)
    {
    }

    BOOL m_bSaveAndValidate;
    CWnd* m_pDlgWnd;
};

void AFXAPI DDX_Control(CDataExchange* pDX, int nIDC, CWnd& rControl);
