// Sees when a dialog with a list view is painted, the same way whoever made it.
#pragma once

namespace painted_list {

/// From now on every list view of this process notes when it has painted itself and, once nothing more is to
/// be painted, has its dialog cancelled.
void Watch();

/// When the last list view had painted itself last.
double LastPainted();

} // namespace painted_list
