#pragma once

class QFontMetrics;
class QPainter;
class QRect;

namespace kestrin {

class DirListItem;

// How a pane's list paints its rows: the icon of the entry's type, the texts
// in the row's colours, marked rows (and the row under a drag) in the
// selected text's colour, the selected row on the selection bar and, where
// alternate colours are on, every other row a shade darker.
//
// GUI thread only: icons come from the theme as rows are painted, so only
// rows that are shown ever cost a look-up.
class DirRowPainter
{
public:
    // Fills `rect`, the cell of `column`, completely.
    static void Paint(QPainter &painter,
                      const QRect &rect,
                      const DirListItem &row,
                      int column,
                      bool selected,
                      bool shaded);
    // Whether a column's text shows whole in a cell `width` pixels wide.
    static bool TextFits(const DirListItem &row, int column, int width, const QFontMetrics &metrics);
};

} // namespace kestrin
