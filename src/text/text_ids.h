#pragma once

#include "text/text_table.h"

// Translators read the comments: `tools/language_files.py template` takes them into
// languages/product_services.pot, but for texts that are "Not shown".
namespace product_services::text_ids {

/// Upgrade center: the button that closes this window, not the application; in other dialogs it is "Close".
/// Room: 67 pixels, about ten letters. "&" marks the next letter as the button's key; write "&&" for a sign.
inline constexpr TextId Exit = 12;
/// Upgrade center: title and heading, behind the product's name, as in "Example Draft - Upgrade center".
/// An upgrade is a new version that is paid for: not the word for free updates.
/// Room: one line of 387 pixels, about sixty letters together with the name.
inline constexpr TextId UpgradeCenter = 22;
/// Upgrade center: head of the list's first column.
/// Room: 238 pixels, about forty letters.
inline constexpr TextId ProductName = 23;
/// Upgrade center: head of the list's second column.
/// Room: 88 pixels, about fifteen letters; where it is too long, "Version" alone is enough.
inline constexpr TextId ProductVersion = 24;
/// Upgrade center: the button that opens the selected product's purchase page in the browser.
/// Room: 67 pixels, about ten letters. "&" marks the next letter as the button's key; write "&&" for a sign.
inline constexpr TextId BuyNow = 38;
/// Message of result code 400, which no call reports today.
/// Room: any; it is for the host.
inline constexpr TextId UnknownError = 56;
/// Update check: message box, where there is no connection. Message of result code 503, too.
/// Room: any; the box grows with it.
inline constexpr TextId NoInternet = 57;
/// Message of result code 504, which no call reports today.
/// Room: any; it is for the host.
inline constexpr TextId ServerUnreachable = 59;
/// Message of result code 540: the user has left the upgrade center, not the application.
/// Room: any; it is for the host.
inline constexpr TextId UserQuit = 67;
/// Message of result code 920: the service offers no upgrade. Not the word for free updates.
/// Room: any; it is for the host.
inline constexpr TextId NoUpgrades = 70;
/// Message of result code 930: the browser shows a purchase page, the product goes on running.
/// Room: any; it is for the host.
inline constexpr TextId BrowserOpened = 71;
/// Message of result code 940: the upgrade center stays away, since the service cannot be reached.
/// Room: any; it is for the host.
inline constexpr TextId NoConnection = 72;
/// Message of result code 950: the registry holds no record of the product.
/// Room: any; it is for the host.
inline constexpr TextId NoProductRecord = 73;
/// Update check: message box, where no newer release is there.
/// Room: any; the box grows with it.
inline constexpr TextId LatestVersion = 74;
/// Not shown. Has the text of `UnstableConnection` in English.
inline constexpr TextId UnstableConnectionSpare = 75;
/// Message of result code 0, which no call reports today.
/// Room: any; it is for the host.
inline constexpr TextId UnstableConnection = 77;

} // namespace product_services::text_ids
