#pragma once

/// The library's language id for the user's language in Windows, such as 140 for "de-AT"; 0, which shows
/// English, for a language that the library has no id for.
int UserLanguageId();
