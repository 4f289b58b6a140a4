// Assertions about parts of a text whose failures show the text.
#pragma once

#include <gtest/gtest.h>
#include <string>

inline testing::AssertionResult Contains(const std::wstring& text, const std::wstring& part)
{
    return testing::AssertionResult(text.find(part) != text.npos)
           << testing::PrintToString(part) << " in " << testing::PrintToString(text);
}

inline testing::AssertionResult EndsWith(const std::wstring& text, const std::wstring& end)
{
    return testing::AssertionResult(text.ends_with(end))
           << testing::PrintToString(end) << " at the end of " << testing::PrintToString(text);
}
