#pragma once

#define IDD_CONTROLS 3

#define IDC_EXIT 16
#define IDC_DEFAULT 30
#define IDC_LIST 100
#define IDC_TEXT 101
