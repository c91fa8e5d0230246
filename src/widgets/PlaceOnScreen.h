#pragma once

#include <QRect>

class QScreen;
class QWidget;

namespace kestrin {

// Puts a window of Kestrin's where the user can see all of it: on the screen
// that shows `anchor`'s window (the main window: the window's parent when no
// anchor is given; without either, the screen under `wanted`), inside that
// screen's available area with its frame and title bar, and never larger
// than that area. `wanted` is the window's own area (its geometry, frame
// excluded) as the window would take it; it is cut to the room when bigger
// and moved the least that brings it inside.
//
// A window that is not shown yet has no frame to measure: it is taken to get
// the frame that the window manager gave `anchor`'s window.
void PlaceOnScreen(QWidget *window, const QRect &wanted, const QWidget *anchor = nullptr);

// The screen that PlaceOnScreen puts a window near `anchor` (or at
// `wanted`) on; null only where there is no screen at all.
const QScreen *ScreenFor(const QWidget *anchor, const QRect &wanted = {});
// That screen's available area, which the window's frame must fit in too.
QRect ScreenRoom(const QWidget *anchor, const QRect &wanted = {});

} // namespace kestrin
