#include "panes/PaneBevel.h"

#include "widgets/RgbColor.h"
#include <QFontMetrics>
#include <QPainter>
#include <cmath>

namespace kestrin {

void PaneBevel::Draw(QPainter &painter,
                     const QRect &bounds,
                     const rgb_color &background,
                     const QColor &textColor,
                     const QString &text)
{
    painter.fillRect(bounds, ToQColor(background));
    const QLine lines[] = {
        QLine(bounds.topLeft(), bounds.topRight()),
        QLine(bounds.topLeft(), bounds.bottomLeft()),
    };
    painter.setPen(QColor(255, 255, 255));
    painter.drawLines(lines, 2);
    painter.setPen(QColor(152, 152, 152));
    painter.drawLine(bounds.bottomLeft(), bounds.bottomRight());
    painter.drawLine(bounds.topRight(), bounds.bottomRight());
    const QFontMetricsF metrics(painter.font());
    const int baseline = int(std::ceil(metrics.ascent()));
    painter.setPen(textColor);
    painter.drawText(bounds.left() + 9, bounds.top() + baseline + 5, text);
}

int PaneBevel::Height(const QFont &font)
{
    const QFontMetricsF metrics(font);
    return int(std::ceil(metrics.ascent())) + int(std::ceil(metrics.descent())) + 10;
}

} // namespace kestrin
