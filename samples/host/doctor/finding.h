#pragma once

#include "rows.h"

#include <string>
#include <vector>

namespace doctor {

enum class State
{
    Ok,
    /// Worth knowing, and no fault by itself.
    Note,
    Wrong
};

struct Finding
{
    State state = State::Ok;
    /// What was looked at, in a word or two.
    std::wstring check;
    /// What was seen, and the cause where it is not as it should be.
    std::wstring sentence;
    /// One of doctor::rows.
    const wchar_t* row = rows::Code;
};

using Findings = std::vector<Finding>;

} // namespace doctor
