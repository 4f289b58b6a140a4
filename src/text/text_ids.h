#pragma once

#include "text/text_table.h"

namespace product_services::text_ids {

inline constexpr TextId Exit = 12;
inline constexpr TextId UpgradeCenter = 22;
inline constexpr TextId ProductName = 23;
inline constexpr TextId ProductVersion = 24;
inline constexpr TextId BuyNow = 38;
inline constexpr TextId UnknownError = 56;
inline constexpr TextId NoInternet = 57;
inline constexpr TextId ServerUnreachable = 59;
inline constexpr TextId UserQuit = 67;
inline constexpr TextId NoUpgrades = 70;
inline constexpr TextId BrowserOpened = 71;
inline constexpr TextId NoConnection = 72;
inline constexpr TextId NoProductRecord = 73;
inline constexpr TextId LatestVersion = 74;
/// Has the text of `UnstableConnection` in English; nothing shows it.
inline constexpr TextId UnstableConnectionSpare = 75;
inline constexpr TextId UnstableConnection = 77;

} // namespace product_services::text_ids
