#include "fileops/AttVListItem.h"

#include "widgets/RgbColor.h"

#include <QFontMetrics>
#include <QPainter>

namespace kestrin {

namespace {

const QColor kRowBackground(255, 255, 255);
const QColor kSelectedBackground(200, 200, 200);

} // namespace

AttVListItem::AttVListItem(const std::string &name, const std::string &value, rgb_color color)
    : fName(QString::fromStdString(name))
    , fValue(QString::fromStdString(value))
    , fColor(color)
{}

void AttVListItem::DrawItemColumn(
    QPainter &painter, const QRect &rect, int column, bool selected, bool)
{
    painter.save();
    painter.fillRect(rect, selected ? kSelectedBackground : kRowBackground);
    painter.setClipRect(rect);
    painter.setPen(ToQColor(fColor));
    const QFontMetrics metrics(painter.font());
    const int baseline = rect.top() + (rect.height() + metrics.ascent() - metrics.descent()) / 2;
    const QString text = metrics.elidedText(ColumnText(column), Qt::ElideRight, rect.width() - 4);
    painter.drawText(rect.left() + 2, baseline, text);
    painter.restore();
}

QString AttVListItem::ColumnText(int column) const
{
    if (column == 0)
        return fName;
    if (column == 1)
        return fValue;
    return {};
}

} // namespace kestrin
