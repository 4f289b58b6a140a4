// Converts and prints texts, and ends the process.
#pragma once

#include <string>
#include <string_view>

namespace product_services_tool {

/// Converts UTF-16 to UTF-8. An unpaired surrogate becomes a replacement character.
std::string ToUtf8(std::wstring_view text);

/// Replaces control characters, such as line ends, by question marks, because the text may come from an
/// untrusted source.
std::wstring ToOneLine(std::wstring text);

/// Writes a line to the standard output or the standard error at once. A console gets UTF-16, a file or a
/// pipe UTF-8.
void PrintLine(std::wstring_view line);
void PrintErrorLine(std::wstring_view line);

/// Ends the process at once with all its threads, even if one of them never returns.
[[noreturn]] void EndProcess(int status);

} // namespace product_services_tool
