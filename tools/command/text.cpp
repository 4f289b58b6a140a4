#include "text.h"

#include <algorithm>
#include <cstdlib>
#include <cwctype>
#include <windows.h>

namespace product_services_tool {
namespace {

void WriteToStream(DWORD stream, std::wstring_view line)
{
    const std::wstring text = std::wstring(line) + L'\n';
    const HANDLE handle = GetStdHandle(stream);
    DWORD mode = 0;
    DWORD written = 0;
    if (GetConsoleMode(handle, &mode)) {
        WriteConsoleW(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        return;
    }
    const std::string utf8 = ToUtf8(text);
    WriteFile(handle, utf8.data(), static_cast<DWORD>(utf8.size()), &written, nullptr);
}

} // namespace

std::string ToUtf8(std::wstring_view text)
{
    const int size = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), length, nullptr, nullptr);
    return utf8;
}

std::wstring ToOneLine(std::wstring text)
{
    std::replace_if(
        text.begin(), text.end(), [](wchar_t character) { return std::iswcntrl(character) != 0; }, L'?');
    return text;
}

void PrintLine(std::wstring_view line)
{
    WriteToStream(STD_OUTPUT_HANDLE, line);
}

void PrintErrorLine(std::wstring_view line)
{
    WriteToStream(STD_ERROR_HANDLE, line);
}

void EndProcess(int status)
{
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    std::abort();
}

} // namespace product_services_tool
