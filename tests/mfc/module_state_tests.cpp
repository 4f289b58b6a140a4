#include "scripted_dialog.h"

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
        EXPECT_EQ(dialog.DoModal(), -1) << "the template is in another module";
        try {
            AFX_MANAGE_STATE(&second)
            RunAndLook(dialog, [] { EXPECT_EQ(AfxGetModuleState(), AfxGetStaticModuleState()); });
            EXPECT_EQ(AfxGetModuleState(), &second) << "after the dialog's own";
            throw std::runtime_error("leaves the scope");
        } catch (const std::runtime_error&) {
            EXPECT_EQ(AfxGetModuleState(), &first);
        }
        std::thread([] { EXPECT_EQ(AfxGetModuleState(), AfxGetStaticModuleState()); }).join();
    }
    EXPECT_EQ(AfxGetModuleState(), AfxGetStaticModuleState());
}
