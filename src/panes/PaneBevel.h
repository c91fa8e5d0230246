#pragma once

#include "widgets/RgbColor.h"

#include <QFont>
#include <QRect>
#include <QString>

class QPainter;

namespace kestrin {

// How the pane's header and footer are drawn: the background, a raised
// bevel (white above and left, grey below and right), and one line of text
// 9 units in, 5 units below the font's ascent.
class PaneBevel
{
public:
    static constexpr rgb_color kPanelColor{216, 216, 216, 255};

    static void Draw(QPainter &painter,
                     const QRect &bounds,
                     const rgb_color &background,
                     const QColor &textColor,
                     const QString &text);
    // The height that fits one line of the widget's font with the margins.
    static int Height(const QFont &font);
};

} // namespace kestrin
