// The anchors of the headings of docs/troubleshooting.md to which findings link. A test compares them with
// the page.
#pragma once

namespace product_services_tool::help_anchors {

inline constexpr wchar_t Appearance[] = L"the-window-looks-wrong";
inline constexpr wchar_t Certificate[] = L"the-certificate-is-refused";
inline constexpr wchar_t English[] = L"the-texts-are-english";
inline constexpr wchar_t Hanging[] = L"the-call-does-not-return";
inline constexpr wchar_t Installation[] = L"the-dll-does-not-load";
inline constexpr wchar_t InvalidReply[] = L"crash-or-exception";
inline constexpr wchar_t NoConnection[] = L"no-internet-found";
inline constexpr wchar_t NoRecord[] = L"error-950";
inline constexpr wchar_t NoUpdate[] = L"no-update-is-found-although-there-is-one";
inline constexpr wchar_t Nothing[] = L"nothing-happens";
inline constexpr wchar_t Proxies[] = L"proxies";
inline constexpr wchar_t UntrustedUrl[] = L"the-address-is-not-trusted";

} // namespace product_services_tool::help_anchors
