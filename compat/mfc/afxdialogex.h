// Dialogs with a background image, as documented for MFC.
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

    /// Paints the image without scaling it behind the controls. Static texts are transparent. Null removes
    /// the image. If `bAutoDestroy` is TRUE, the dialog owns the image.
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
