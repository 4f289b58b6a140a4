// Common controls, as documented for MFC.
#pragma once

#include <afxwin.h>

class CListCtrl : public CWnd
{
    DECLARE_DYNAMIC(CListCtrl)

public:
    int InsertColumn(
        int nCol, LPCTSTR lpszColumnHeading, int nFormat = LVCFMT_LEFT, int nWidth = -1, int nSubItem = -1);
    int InsertItem(int nItem, LPCTSTR lpszItem);
    BOOL SetItemText(int nItem, int nSubItem, LPCTSTR lpszText);
    int GetNextItem(int nItem, int nFlags) const;
};
