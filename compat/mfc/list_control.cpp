#include <afxcmn.h>

IMPLEMENT_DYNAMIC(CListCtrl, CWnd)

int CListCtrl::InsertColumn(int nCol, LPCTSTR lpszColumnHeading, int nFormat, int nWidth, int nSubItem)
{
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_FMT;
    column.pszText = const_cast<LPWSTR>(lpszColumnHeading);
    column.fmt = nFormat;
    if (nWidth != -1) {
        column.mask |= LVCF_WIDTH;
        column.cx = nWidth;
    }
    if (nSubItem != -1) {
        column.mask |= LVCF_SUBITEM;
        column.iSubItem = nSubItem;
    }
    return static_cast<int>(
        SendMessage(LVM_INSERTCOLUMNW, static_cast<WPARAM>(nCol), reinterpret_cast<LPARAM>(&column)));
}

int CListCtrl::InsertItem(int nItem, LPCTSTR lpszItem)
{
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = nItem;
    item.pszText = const_cast<LPWSTR>(lpszItem);
    return static_cast<int>(SendMessage(LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
}

BOOL CListCtrl::SetItemText(int nItem, int nSubItem, LPCTSTR lpszText)
{
    LVITEMW item{};
    item.iSubItem = nSubItem;
    item.pszText = const_cast<LPWSTR>(lpszText);
    return static_cast<BOOL>(
        SendMessage(LVM_SETITEMTEXTW, static_cast<WPARAM>(nItem), reinterpret_cast<LPARAM>(&item)));
}

int CListCtrl::GetNextItem(int nItem, int nFlags) const
{
    return static_cast<int>(SendMessage(LVM_GETNEXTITEM, static_cast<WPARAM>(nItem), MAKELPARAM(nFlags, 0)));
}
