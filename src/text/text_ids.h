#pragma once

#include "text/text_table.h"

// Translators read the comments below: `tools/language_files.py update-template` copies them into
// languages/product_services.pot, except those that begin with "Not shown".
namespace product_services::text_ids {

/// Upgrade center: the button that closes this window, not the application. Other dialogs call it "Close".
/// Maximum width: 67 pixels, about ten letters. "&" marks the access key; write "&&" to show an ampersand.
inline constexpr TextId Exit = 12;
/// Upgrade center: the title and the heading, after the product name, as in "Example Draft - Upgrade center".
/// An upgrade is a new version that costs money. Do not use the word for a free update.
/// Maximum width: one line of 387 pixels, about sixty letters together with the product name.
inline constexpr TextId UpgradeCenter = 22;
/// Upgrade center: the header of the list's first column.
/// Maximum width: 238 pixels, about forty letters.
inline constexpr TextId ProductName = 23;
/// Upgrade center: the header of the list's second column.
/// Maximum width: 88 pixels, about fifteen letters. If that is too narrow, translate only "Version".
inline constexpr TextId ProductVersion = 24;
/// Upgrade center: the button that opens the purchase page of the selected product in the browser.
/// Maximum width: 67 pixels, about ten letters. "&" marks the access key; write "&&" to show an ampersand.
inline constexpr TextId BuyNow = 38;
/// Message for result code 400, which no call reports at present.
/// Any length: the application decides where to show it.
inline constexpr TextId UnknownError = 56;
/// Update check: message box if there is no connection to the service. Also the message for result code 503.
/// Any length: the message box grows with the text.
inline constexpr TextId NoInternet = 57;
/// Message for result code 504, which no call reports at present.
/// Any length: the application decides where to show it.
inline constexpr TextId ServerUnreachable = 59;
/// Message for result code 540: the user has closed the upgrade center, but not the application.
/// Any length: the application decides where to show it.
inline constexpr TextId UserQuit = 67;
/// Message for result code 920: the service offers no upgrade. Do not use the word for a free update.
/// Any length: the application decides where to show it.
inline constexpr TextId NoUpgrades = 70;
/// Message for result code 930: the browser shows a purchase page, and the product continues to run.
/// Any length: the application decides where to show it.
inline constexpr TextId BrowserOpened = 71;
/// Message for result code 940: the upgrade center does not open because the service cannot be reached.
/// Any length: the application decides where to show it.
inline constexpr TextId NoConnection = 72;
/// Message for result code 950: the registry has no record of the product.
/// Any length: the application decides where to show it.
inline constexpr TextId NoProductRecord = 73;
/// Update check: message box if there is no newer release.
/// Any length: the message box grows with the text.
inline constexpr TextId LatestVersion = 74;
/// Not shown. In English it is the same text as `UnstableConnection`.
inline constexpr TextId UnstableConnectionUnused = 75;
/// Message for result code 0, which no call reports at present.
/// Any length: the application decides where to show it.
inline constexpr TextId UnstableConnection = 77;

} // namespace product_services::text_ids
