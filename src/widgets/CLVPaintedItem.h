#pragma once

#include "widgets/CLVListItem.h"

class QPainter;
class QRect;

namespace kestrin {

// A row that draws its own columns, as a ColumnListView paints them unless
// the view paints its rows itself (ColumnListView::DrawCell).
class CLVPaintedItem : public CLVListItem
{
public:
    using CLVListItem::CLVListItem;

    // Draws `column` (a logical column index) into `rect`, which the row must
    // fill completely (the view paints no background of its own). `selected`
    // is true for the selected row; `complete` for a full redraw.
    virtual void DrawItemColumn(
        QPainter &painter, const QRect &rect, int column, bool selected, bool complete)
        = 0;
};

} // namespace kestrin
