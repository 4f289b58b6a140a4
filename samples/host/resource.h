#pragma once

#define IDI_HOST 1
#define IDD_MAIN_WINDOW 100
#define IDR_MENU 100
#define IDM_CHECK 101
#define IDM_UPGRADE 102
#define IDC_STATUS 201
