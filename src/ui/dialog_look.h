#pragma once

#include "text/text_table.h"

#include <string>

class CDialogEx;

namespace product_services {

/// Sets the icon, title, taskbar button and background picture that the library's dialogs share. A dialog
/// calls it in OnInitDialog, after the base class. Returns the title, "<caption> - <text of titleId>".
std::wstring ApplyDialogLook(CDialogEx& dialog, TextId titleId);

} // namespace product_services
