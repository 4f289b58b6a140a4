// The headings of docs/troubleshooting.md that the doctor's findings lead to, as a link names them. A test
// holds them against the page.
#pragma once

namespace doctor::rows {

inline constexpr wchar_t Box[] = L"the-user-sees-a-message-box";
inline constexpr wchar_t Code[] = L"the-host-gets-a-code";
inline constexpr wchar_t Nothing[] = L"nothing-is-shown-and-nothing-is-reported";
inline constexpr wchar_t Exception[] = L"an-exception-leaves-the-call-or-the-host-ends";
inline constexpr wchar_t NoRecord[] = L"950-keeps-coming";
inline constexpr wchar_t English[] = L"english-shows";
inline constexpr wchar_t Hanging[] = L"it-hangs";
inline constexpr wchar_t Proxies[] = L"proxies";
inline constexpr wchar_t Looks[] = L"it-looks-wrong";

} // namespace doctor::rows
