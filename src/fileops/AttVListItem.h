#pragma once

#include "platform/RgbColor.h"
#include "widgets/CLVPaintedItem.h"

#include <string>

namespace kestrin {

// One row of the attribute list: the attribute's name and what it holds,
// drawn in one colour.
class AttVListItem : public CLVPaintedItem
{
public:
    AttVListItem(const std::string &name, const std::string &value, rgb_color color);

    void DrawItemColumn(
        QPainter &painter, const QRect &rect, int column, bool selected, bool complete) override;
    QString ColumnText(int column) const override;

private:
    QString fName;
    QString fValue;
    rgb_color fColor;
};

} // namespace kestrin
