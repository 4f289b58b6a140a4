#pragma once

#include "user_language.h"

#include <optional>
#include <string>
#include <vector>

/// What the command line of the sample host asks for.
struct Options
{
    std::wstring command;
    std::wstring productName = L"Example Draft";
    std::wstring productVersion = L"2026.1";
    std::wstring apiKey = L"draft20-7k2m9q-x4v8p1w";
    int languageId = UserLanguageId();
    /// The host itself presses the buttons, for a run without a user.
    bool isUnattended = false;
    /// The offer that an unattended run buys, counted from 1; 0 leaves the upgrade center.
    int buys = 0;
    /// How long an unattended run looks at a window before it presses a button.
    int looksMs = 0;
};

extern const wchar_t Usage[];

/// Nothing where the arguments do not fit `Usage`.
std::optional<Options> ReadOptions(const std::vector<std::wstring>& arguments);
