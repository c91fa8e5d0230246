#include "mainwindow/CommandLine.h"

#include "panes/EditControl.h"
#include "widgets/RgbColor.h"

#include <QFontMetrics>
#include <QPainter>

namespace kestrin {

namespace {

const QColor kShadow(152, 152, 152);
const QColor kLight(255, 255, 255);
constexpr int kFontPixelSize = 12;
constexpr int kLabelInset = 6;

} // namespace

CommandLine::CommandLine(const QRect &frame, QWidget *parent)
    : QWidget(parent)
{
    setObjectName("commandline");
    setGeometry(frame);
    QFont small = font();
    small.setPixelSize(kFontPixelSize);
    setFont(small);

    // No target: the field answers nobody when editing ends.
    fEdit = new EditControl(QString(), -1, nullptr, this);
    fEdit->setGeometry(QRect(QPoint(1 + width() / 2, 3), QPoint(width() - 3, height() - 3)));
}

CommandLine::~CommandLine() = default;

void CommandLine::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect bounds = rect();
    painter.fillRect(bounds, kPanelGrey);
    painter.setPen(kLight);
    painter.drawLine(bounds.topLeft(), bounds.topRight());
    painter.drawLine(bounds.topLeft(), bounds.bottomLeft());
    painter.setPen(kShadow);
    painter.drawLine(bounds.bottomLeft(), bounds.bottomRight());
    painter.drawLine(bounds.topRight(), bounds.bottomRight());

    painter.setPen(Qt::black);
    const QFontMetrics metrics(font());
    const int baseline = (height() + metrics.ascent() - metrics.descent()) / 2;
    painter.drawText(kLabelInset, baseline, QStringLiteral("Command:"));
}

} // namespace kestrin
