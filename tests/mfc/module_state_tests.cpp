#include "scripted_dialog.h"

#include <afxcmn.h>

#include <stdexcept>

TEST(ModuleState, IsInForceForItsScopeOnItsThread)
{
    AFX_MODULE_STATE first;
    AFX_MODULE_STATE second;
    first.m_hCurrentResourceHandle = GetModuleHandleW(L"kernel32.dll");
    second.m_hCurrentResourceHandle = GetModuleHandleW(nullptr);
    ScriptedDialog dialog;
    {
        AFX_MANAGE_STATE(&first)
        EXPECT_EQ(AfxGetResourceHandle(), first.m_hCurrentResourceHandle);
        EXPECT_EQ(dialog.DoModal(), -1) << "the template is in another module";
        try {
            AFX_MANAGE_STATE(&second)
            EXPECT_EQ(AfxGetResourceHandle(), second.m_hCurrentResourceHandle);
            RunAndLook(dialog, [] { EXPECT_EQ(AfxGetModuleState(), AfxGetStaticModuleState()); });
            EXPECT_EQ(AfxGetModuleState(), &second) << "after the dialog's own";
            throw std::runtime_error("leaves the scope");
        } catch (const std::runtime_error&) {
            EXPECT_EQ(AfxGetResourceHandle(), first.m_hCurrentResourceHandle);
        }
        std::thread([] { EXPECT_EQ(AfxGetModuleState(), AfxGetStaticModuleState()); }).join();
    }
    EXPECT_EQ(AfxGetModuleState(), AfxGetStaticModuleState());
}

TEST(RuntimeClass, TellsNameAndAncestors)
{
    const CListCtrl list;
    const CObject& object = list;
    EXPECT_STREQ(object.GetRuntimeClass()->m_lpszClassName, "CListCtrl");
    EXPECT_TRUE(object.IsKindOf(RUNTIME_CLASS(CListCtrl)));
    EXPECT_TRUE(object.IsKindOf(RUNTIME_CLASS(CWnd)));
    EXPECT_TRUE(object.IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(object.IsKindOf(RUNTIME_CLASS(CDialog)));
    EXPECT_FALSE(CWnd().IsKindOf(RUNTIME_CLASS(CListCtrl)));
}
