#pragma once

class QFontMetrics;
class QPainter;
class QRect;
class QString;

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
    // The width a cell needs to show the column's text whole.
    static int TextWidth(const DirListItem &row, int column, const QFontMetrics &metrics);
    // What a cell `width` pixels wide shows of the column's text: a path
    // that does not fit loses its middle, so that where it begins and the
    // entry's own name both show; any other text is cut at the cell's edge.
    static QString ShownText(const DirListItem &row,
                             int column,
                             int width,
                             const QFontMetrics &metrics);
};

} // namespace kestrin
