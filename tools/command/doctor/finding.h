// What the doctor finds.
#pragma once

#include "doctor/help_anchors.h"

#include <string>

namespace product_services_tool {

enum class Severity
{
    Ok,
    /// Worth knowing, and not a fault by itself.
    Warning,
    Error
};

struct Finding
{
    Severity severity = Severity::Ok;
    /// What was checked, in a word or two.
    const wchar_t* check = L"";
    /// What was seen, and why it is not as it should be.
    std::wstring message = {};
    /// One of help_anchors.
    const wchar_t* helpAnchor = L"";
};

} // namespace product_services_tool
