// A finding of the doctor.
#pragma once

#include "doctor/help_anchors.h"

#include <string>

namespace product_services_tool {

enum class Severity
{
    Ok,
    /// Worth knowing, but not an error by itself.
    Warning,
    Error
};

struct Finding
{
    Severity severity = Severity::Ok;
    /// The name of the check, in a word or two.
    const wchar_t* check = L"";
    /// What was found, and why it is a problem.
    std::wstring message = {};
    /// One of help_anchors.
    const wchar_t* helpAnchor = L"";
};

} // namespace product_services_tool
