#include "widgets/StatusBar.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace kestrin {

namespace {

// BStatusBar's default look: a 16 pixel bar in the system's bar blue.
constexpr int kBarHeight = 16;
constexpr int kTextGap = 3;
const QColor kBarColor(50, 150, 255);
const QColor kEmptyColor(236, 236, 236);
const QColor kShadowColor(152, 152, 152);
const QColor kLightColor(255, 255, 255);

} // namespace

StatusBar::StatusBar(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

StatusBar::~StatusBar() = default;

void StatusBar::Reset(const QString &label, const QString &trailingLabel)
{
    fLabel = label;
    fTrailingLabel = trailingLabel;
    fText.clear();
    fTrailingText.clear();
    fValue = 0;
    fMax = 100;
    update();
}

void StatusBar::SetMaxValue(float max)
{
    fMax = max;
    fValue = Clamped(fValue);
    update();
}

void StatusBar::Update(float delta, const QString &text, const QString &trailingText)
{
    if (std::isfinite(delta))
        fValue = Clamped(fValue + delta);
    if (!text.isNull())
        fText = text;
    if (!trailingText.isNull())
        fTrailingText = trailingText;
    update();
}

void StatusBar::SetText(const QString &text)
{
    fText = text;
    update();
}

void StatusBar::SetTrailingText(const QString &text)
{
    fTrailingText = text;
    update();
}

void StatusBar::SetLabel(const QString &label)
{
    fLabel = label;
    update();
}

void StatusBar::SetTrailingLabel(const QString &label)
{
    fTrailingLabel = label;
    update();
}

float StatusBar::Ceiling() const
{
    // NaN fails both tests, so a garbage maximum also gives an empty bar.
    return std::isfinite(fMax) && fMax > 0 ? fMax : 0.0f;
}

float StatusBar::Clamped(float value) const
{
    if (!std::isfinite(value))
        return 0;
    return std::clamp(value, 0.0f, Ceiling());
}

QSize StatusBar::sizeHint() const
{
    return QSize(200, fontMetrics().height() + kTextGap + kBarHeight + 1);
}

QSize StatusBar::minimumSizeHint() const
{
    return QSize(40, sizeHint().height());
}

void StatusBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QFontMetrics metrics = fontMetrics();
    const int textBottom = metrics.ascent();

    // The label and text grow from the left, the trailing pair from the right;
    // when both do not fit the left pair is cut rather than overdrawn.
    const QString trailing = fTrailingText + fTrailingLabel;
    const int trailingWidth = metrics.horizontalAdvance(trailing);
    const int trailingLeft = width() - trailingWidth;
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(trailingLeft, textBottom, trailing);
    const QString leading = fLabel + fText;
    const int room = std::max(0, trailingLeft - (trailing.isEmpty() ? 0 : 6));
    painter.drawText(0, textBottom, metrics.elidedText(leading, Qt::ElideRight, room));

    const QRect bar(0, metrics.height() + kTextGap, width(), kBarHeight);
    painter.setPen(kShadowColor);
    painter.drawLine(bar.topLeft(), bar.topRight());
    painter.drawLine(bar.topLeft(), bar.bottomLeft());
    painter.setPen(kLightColor);
    painter.drawLine(bar.bottomLeft(), bar.bottomRight());
    painter.drawLine(bar.topRight(), bar.bottomRight());

    const QRect inside = bar.adjusted(1, 1, -1, -1);
    painter.fillRect(inside, kEmptyColor);
    const float ceiling = Ceiling();
    if (ceiling > 0 && fValue > 0) {
        const double fraction = std::min(1.0, double(fValue) / double(ceiling));
        const int filled = int(std::lround(fraction * inside.width()));
        painter.fillRect(QRect(inside.left(), inside.top(), filled, inside.height()), kBarColor);
    }
}

} // namespace kestrin
