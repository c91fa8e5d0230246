#include "widgets/StatusBar.h"

#include <QImage>
#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

using kestrin::StatusBar;

namespace {

// The x positions along the bar's row where bar blue is drawn.
std::vector<bool> BlueAlongTheBar(StatusBar &bar)
{
    const QImage image = bar.grab().toImage();
    std::vector<bool> blue;
    for (int x = 0; x < image.width(); x++)
        blue.push_back(image.pixelColor(x, image.height() - 5) == QColor(50, 150, 255));
    return blue;
}

} // namespace

TEST(StatusBar, UpdateMovesTheValueWithinZeroAndMax)
{
    StatusBar bar;
    bar.SetMaxValue(1000);
    bar.Update(300);
    bar.Update(450.5f);
    EXPECT_FLOAT_EQ(bar.CurrentValue(), 750.5f);
    bar.Update(1e6f);
    EXPECT_FLOAT_EQ(bar.CurrentValue(), 1000) << "past the maximum";
    bar.Update(-5000);
    EXPECT_FLOAT_EQ(bar.CurrentValue(), 0) << "below zero";
    bar.Update(std::numeric_limits<float>::quiet_NaN());
    EXPECT_FLOAT_EQ(bar.CurrentValue(), 0);
    bar.Update(800);
    bar.SetMaxValue(500);
    EXPECT_FLOAT_EQ(bar.CurrentValue(), 500) << "a smaller maximum pulls the value down";
}

TEST(StatusBar, TextsChangeOnlyWhenGivenAndResetClearsThem)
{
    StatusBar bar;
    bar.Update(1, "file.txt", "512");
    bar.Update(1);
    EXPECT_EQ(bar.Text(), "file.txt");
    EXPECT_EQ(bar.TrailingText(), "512");
    bar.Update(1, "", QString());
    EXPECT_EQ(bar.Text(), "") << "an empty text is a text";
    EXPECT_EQ(bar.TrailingText(), "512");

    bar.SetMaxValue(10);
    bar.Reset("From", " Bytes");
    EXPECT_FLOAT_EQ(bar.CurrentValue(), 0);
    EXPECT_FLOAT_EQ(bar.MaxValue(), 100);
    EXPECT_EQ(bar.TrailingText(), "");
    EXPECT_EQ(bar.Label(), "From");
    EXPECT_EQ(bar.TrailingLabel(), " Bytes");
}

TEST(StatusBar, DrawsTheFilledShareAndNothingForAWrappedTotal)
{
    StatusBar bar;
    bar.resize(200, bar.sizeHint().height());
    bar.SetMaxValue(400);
    bar.Update(100);
    std::vector<bool> blue = BlueAlongTheBar(bar);
    EXPECT_TRUE(blue[20] && blue[45]);
    EXPECT_FALSE(blue[60] || blue[180]);

    // Three files of 1 GiB summed into a signed 32-bit total.
    const int32_t wrapped = int32_t(uint32_t(3) << 30);
    ASSERT_LT(wrapped, 0);
    bar.SetMaxValue(float(wrapped));
    bar.Update(512.0f * 1024 * 1024);
    EXPECT_FLOAT_EQ(bar.MaxValue(), float(wrapped));
    EXPECT_FLOAT_EQ(bar.CurrentValue(), 0);
    blue = BlueAlongTheBar(bar);
    EXPECT_EQ(std::count(blue.begin(), blue.end(), true), 0);
}
