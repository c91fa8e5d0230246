#pragma once

#include "platform/RgbColor.h"

#include <QColor>

namespace kestrin {

// Drawing ignores alpha, as plain copying did: the stored defaults give the
// text colours an alpha of 0, and those texts must still show.
inline QColor ToQColor(const rgb_color &color)
{
    return QColor(color.red, color.green, color.blue);
}

// The grey of every panel and window background, as BeOS drew them.
inline const QColor kPanelGrey(216, 216, 216);

} // namespace kestrin
