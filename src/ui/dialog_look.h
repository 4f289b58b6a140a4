#pragma once

#include "text/text_table.h"

#include <string>

class CDialogEx;

namespace product_services {

/// The look that the library's dialogs share: icon, title, taskbar button and background picture. Called by a
/// dialog in its OnInitDialog, after the base class's. Returns the title, "<caption> - <text of titleId>".
std::wstring ApplyDialogLook(CDialogEx& dialog, TextId titleId);

} // namespace product_services
