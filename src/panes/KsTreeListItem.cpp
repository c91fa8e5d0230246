#include "panes/KsTreeListItem.h"

#include "panes/FileIcons.h"

#include "widgets/RgbColor.h"
#include <QFontMetrics>
#include <QPainter>

namespace kestrin {

KsTreeListItem::KsTreeListItem(uint32_t level,
                               const std::string &name,
                               const std::string &path,
                               bool expandable,
                               const RowColors &colors)
    : CLVPaintedItem(level, expandable)
    , fName(name)
    , fPath(path)
    , fColors(colors)
{}

KsTreeListItem::KsTreeListItem(uint32_t level, const RowColors &colors)
    : CLVPaintedItem(level, false)
    , fName(kPlaceholder)
    , fColors(colors)
    , fPlaceholder(true)
    , fPopulated(true)
{}

QString KsTreeListItem::ColumnText(int column) const
{
    return column == 1 ? QString::fromUtf8(fName.data(), qsizetype(fName.size())) : QString();
}

void KsTreeListItem::DrawItemColumn(
    QPainter &painter, const QRect &rect, int column, bool selected, bool)
{
    painter.save();
    painter.fillRect(rect, ToQColor(selected ? fColors.selectionBar : fColors.background));
    painter.setClipRect(rect);
    if (column == 1) {
        int x = rect.left() + 2;
        if (!fPlaceholder) {
            FileIcons::Folder().paint(&painter,
                                      QRect(x, rect.top() + (rect.height() - 16) / 2, 16, 16));
            x += 20;
        }
        painter.setPen(ToQColor(fOver ? fColors.selectedText : fColors.text));
        const QFontMetrics metrics(painter.font());
        const int baseline = rect.top()
                             + (rect.height() + metrics.ascent() - metrics.descent()) / 2;
        painter.drawText(x, baseline, ColumnText(1));
    }
    painter.restore();
}

} // namespace kestrin
