#include <afxwin.h>

#include <afxdialogex.h>

#include "ui/dialog_look.h"

#include "host/current_call.h"
#include "ui/background_bitmap.h"
#include "ui/resource.h"

namespace product_services {

std::wstring ApplyDialogLook(CDialogEx& dialog, TextId titleId)
{
    dialog.SetIcon(AfxGetApp()->LoadIcon(IDI_LIBRARY), TRUE);

    std::wstring title = TextOrEmpty(CurrentHostContext->productName) + L" - " + CurrentText(titleId);
    dialog.SetWindowText(title.c_str());

    dialog.ModifyStyleEx(0, WS_EX_APPWINDOW);

    if (HBITMAP picture = BackgroundBitmapForProduct(TextOrEmpty(CurrentHostContext->apiKey))) {
        dialog.SetBackgroundImage(picture, CDialogEx::BACKGR_TOPLEFT, TRUE, TRUE);
    }
    return title;
}

} // namespace product_services
