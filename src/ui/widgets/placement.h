#pragma once

class QWidget;

namespace orvelle {

/// Moves a dialog so that its centre is that of `parent`, wherever that lies on the screen, and
/// keeps it on that screen. With a `leftInset` (pixels) the centre is that of the parent's area
/// right of it: the main window leaves out its camera list so.
void centreOver(QWidget& dialog, const QWidget& parent, int leftInset = 0);

}  // namespace orvelle
