#include "panes/DirRowPainter.h"

#include "panes/DirListItem.h"
#include "panes/PaneMessages.h"

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

using kestrin::DirListItem;
using kestrin::DirRowPainter;
using kestrin::RowColors;

namespace {

TEST(DirRowPainter, MarkedSelectedRowDrawsMarkedTextOnTheSelectionBar)
{
    RowColors colors;
    colors.background = {255, 255, 255, 255};
    colors.text = {0, 0, 0, 0};
    colors.selectedText = {255, 0, 0, 0};
    colors.selectionBar = {200, 200, 200, 200};
    DirListItem row("WWWWWWWW", "1", "", "-rw-r--r--", colors);

    bool shaded = false;
    const auto colorsIn = [&row, &shaded](bool selected) {
        QImage image(200, 20, QImage::Format_RGB32);
        image.fill(Qt::green);
        QPainter painter(&image);
        QFont font = painter.font();
        font.setPixelSize(14);
        painter.setFont(font);
        DirRowPainter::Paint(painter,
                             QRect(0, 0, 200, 20),
                             row,
                             kestrin::kColumnName,
                             selected,
                             shaded);
        painter.end();
        std::vector<QRgb> seen;
        for (int y = 0; y < image.height(); y++)
            for (int x = 0; x < image.width(); x++)
                seen.push_back(image.pixel(x, y));
        return seen;
    };
    const auto has = [](const std::vector<QRgb> &pixels, QRgb color) {
        return std::find(pixels.begin(), pixels.end(), color) != pixels.end();
    };

    row.SetMarked(true);
    const auto marked = colorsIn(true);
    EXPECT_TRUE(has(marked, qRgb(200, 200, 200)));
    EXPECT_TRUE(has(marked, qRgb(255, 0, 0)));
    EXPECT_FALSE(has(marked, qRgb(0, 255, 0))); // the whole rect is filled
    EXPECT_FALSE(has(marked, qRgb(255, 255, 255)));

    row.SetMarked(false);
    const auto plain = colorsIn(false);
    EXPECT_TRUE(has(plain, qRgb(255, 255, 255)));
    EXPECT_TRUE(has(plain, qRgb(0, 0, 0))); // alpha 0 in the profile still draws
    EXPECT_FALSE(has(plain, qRgb(255, 0, 0)));

    row.SetOver(true);
    EXPECT_TRUE(has(colorsIn(false), qRgb(255, 0, 0)));
    shaded = true;
    EXPECT_TRUE(has(colorsIn(false), qRgb(245, 245, 245)));
    EXPECT_FALSE(has(colorsIn(false), qRgb(255, 255, 255)));
}

} // namespace
