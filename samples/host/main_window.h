#pragma once

/// Opens the sample host's window and returns when the user has closed it. It checks for updates at once, or
/// some time after its start if there was no check within a day.
void RunMainWindow(bool checksAtOnce);
