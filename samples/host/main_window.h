#pragma once

/// Opens the sample host's window and returns when the user has closed it.
void RunMainWindow();
