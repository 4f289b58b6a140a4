// Texts on their way out.
#pragma once

#include <string>
#include <string_view>

namespace product_services_tool {

/// Converts UTF-16 to UTF-8. Half a surrogate pair becomes a replacement character.
std::string ToUtf8(std::wstring_view text);

/// Puts question marks in the place of control characters, such as line ends: who sends them is not trusted.
std::wstring ToOneLine(std::wstring text);

/// Writes a line to the standard output or the standard error at once: real characters on a console, UTF-8
/// into a file or a pipe.
void PrintLine(std::wstring_view line);
void PrintErrorLine(std::wstring_view line);

/// Ends the process at once, with all its threads, of which one may never return.
[[noreturn]] void EndProcess(int status);

} // namespace product_services_tool
