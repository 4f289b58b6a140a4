#pragma once

#define IDD_PLAIN 1
#define IDD_PLACED 2
#define IDD_CONTROLS 3
#define IDD_MISSING 99

#define IDC_EXIT 16
#define IDC_DEFAULT 30
#define IDC_INHERITED 31
#define IDC_LIST 100
#define IDC_TEXT 101
