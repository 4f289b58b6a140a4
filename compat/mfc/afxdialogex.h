// Dialogs with a background image, as MFC documents them.
#pragma once

#include <afxwin.h>

class CDialogEx : public CDialog
{
    DECLARE_DYNAMIC(CDialogEx)

public:
    enum BackgroundLocation
    {
        BACKGR_TOPLEFT = 1
    };

    CDialogEx(UINT nIDTemplate, CWnd* pParent = nullptr);
    ~CDialogEx() override;

    /// Paints the image, unscaled, behind the controls; static texts are transparent over it. Null takes the
    /// image away. The dialog deletes the image with itself where `bAutoDestroy` is TRUE.
    void SetBackgroundImage(
        HBITMAP hBitmap, BackgroundLocation location, BOOL bAutoDestroy = TRUE, BOOL bRepaint = TRUE);

protected:
    BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult) override;

private:
    void EraseBackground(HDC dc);
    void DeleteOwnedImage();

    HBITMAP m_image = nullptr;
    BOOL m_ownsImage = FALSE;
};
