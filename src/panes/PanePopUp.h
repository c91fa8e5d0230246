#pragma once

#include <QPoint>
#include <cstdint>

class QWidget;

namespace kestrin {

class PaneModel;

// The menu a secondary click opens on a pane's list ("DirViewPopUp"). Its
// items carry the main window's command codes and go to the window, as the
// menu bar's do. The items about a row are offered only over a row.
//
// GUI thread only.
class PanePopUp
{
public:
    // Codes of the items that the menu bar does not have.
    static constexpr uint32_t kOpenTerminalHere = 133;

    // Shows the menu over `list` at a point of the screen and sends the
    // chosen item's code to the pane's window. `overRow` tells whether the
    // click was on a row (which is then selected).
    static void Exec(QWidget &list,
                     PaneModel &model,
                     const QPoint &globalPosition,
                     bool overRow,
                     bool treeShown);
};

} // namespace kestrin
