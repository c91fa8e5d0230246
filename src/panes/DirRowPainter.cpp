#include "panes/DirRowPainter.h"

#include "panes/DirListItem.h"
#include "panes/FileIcons.h"
#include "panes/PaneMessages.h"
#include "widgets/RgbColor.h"

#include <QFontMetrics>
#include <QIcon>
#include <QPainter>

namespace kestrin {

namespace {

constexpr int kIconSize = 16;
constexpr int kIconInset = 2;
constexpr int kTextInset = 2;

} // namespace

void DirRowPainter::Paint(QPainter &painter,
                          const QRect &rect,
                          const DirListItem &row,
                          int column,
                          bool selected,
                          bool shaded)
{
    painter.save();
    const RowColors &colors = row.Colors();
    rgb_color background = colors.background;
    if (shaded) {
        background.red = uint8_t(background.red - 10);
        background.green = uint8_t(background.green - 10);
        background.blue = uint8_t(background.blue - 10);
    }
    painter.fillRect(rect, ToQColor(selected ? colors.selectionBar : background));
    painter.setClipRect(rect);
    if (column == kColumnIcon) {
        if (!row.IsParent()) {
            // Tall rows keep the icon in the middle: moved down by half the
            // excess over 20, rounded up.
            const int excess = rect.height() - 20;
            const int down = excess > 0 ? (excess + 1) / 2 : 0;
            const QRect iconRect(rect.left() + kIconInset,
                                 rect.top() + kIconInset + down,
                                 kIconSize,
                                 kIconSize);
            FileIcons::ForEntry(row.Name(), row.Mode(), row.IsLink()).paint(&painter, iconRect);
        }
    } else {
        const QFontMetrics metrics(painter.font());
        const QString text = ShownText(row, column, rect.width(), metrics);
        if (!text.isEmpty()) {
            painter.setPen(
                ToQColor(row.IsMarked() || row.GetOver() ? colors.selectedText : colors.text));
            const int baseline = rect.top()
                                 + (rect.height() + metrics.ascent() - metrics.descent()) / 2;
            painter.drawText(rect.left() + kTextInset, baseline, text);
        }
    }
    painter.restore();
}

bool DirRowPainter::TextFits(const DirListItem &row,
                             int column,
                             int width,
                             const QFontMetrics &metrics)
{
    return TextWidth(row, column, metrics) <= width;
}

int DirRowPainter::TextWidth(const DirListItem &row, int column, const QFontMetrics &metrics)
{
    return kTextInset + metrics.horizontalAdvance(row.ColumnText(column));
}

QString DirRowPainter::ShownText(const DirListItem &row,
                                 int column,
                                 int width,
                                 const QFontMetrics &metrics)
{
    if (column != kColumnName || !row.NamedByPath() || TextFits(row, column, width, metrics))
        return row.ColumnText(column);
    return metrics.elidedText(row.ColumnText(column), Qt::ElideMiddle, width - 2 * kTextInset);
}

} // namespace kestrin
