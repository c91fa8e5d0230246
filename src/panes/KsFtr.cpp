#include "panes/KsFtr.h"

#include "panes/PaneBevel.h"
#include "widgets/StatusBar.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace kestrin {

namespace {

const QColor kTextColor(78, 89, 126);
// The filter's field takes this share of the footer, within these bounds.
constexpr int kFilterShare = 40;
constexpr int kFilterMin = 80;
constexpr int kFilterMax = 260;

} // namespace

KsFtr::KsFtr(QWidget *parent)
    : QWidget(parent)
    , fFilter(new QLineEdit(this))
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    fFilter->setObjectName("filter");
    fFilter->setAccessibleName("Filter");
    fFilter->setPlaceholderText("Filter");
    fFilter->setClearButtonEnabled(false);
    fFilter->hide();
    fFilter->installEventFilter(this);
    connect(fFilter, &QLineEdit::textEdited, this, [this](const QString &text) {
        emit FilterEdited(text.toStdString());
    });
}

KsFtr::~KsFtr() = default;

void KsFtr::SetText(const std::string &text)
{
    fText = text;
    update();
}

void KsFtr::Start(float max)
{
    if (fBar.isNull()) {
        fBar = new StatusBar(this);
        fBar->setObjectName("progress");
    }
    fBar->Reset();
    fBar->SetMaxValue(max);
    PlaceBar();
    fBar->show();
}

void KsFtr::SetMax(float max)
{
    if (fBar)
        fBar->SetMaxValue(max);
}

void KsFtr::Update()
{
    if (fBar)
        fBar->Update(1);
}

void KsFtr::Stop()
{
    delete fBar.data();
}

void KsFtr::PlaceBar()
{
    // The bar's own label line sits above the footer, out of sight: only
    // the bar shows.
    if (fBar)
        fBar->setGeometry(0, -14, width(), height() + 14);
}

void KsFtr::OpenFilter(const std::string &text)
{
    fFilter->setText(QString::fromStdString(text));
    fFilter->selectAll();
    fFilter->show();
    PlaceFilter();
    fFilter->setFocus(Qt::ShortcutFocusReason);
    update();
}

void KsFtr::ShowFilter(const std::string &text)
{
    if (fFilter->hasFocus())
        return;
    fFilter->setText(QString::fromStdString(text));
    if (fFilter->isVisible() == text.empty()) {
        fFilter->setVisible(!text.empty());
        update();
    }
}

bool KsFtr::FilterShown() const
{
    return !fFilter->isHidden();
}

bool KsFtr::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == fFilter && event->type() == QEvent::FocusOut)
        emit FilterFocusLost(static_cast<QFocusEvent *>(event)->reason());
    if (watched != fFilter || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    switch (key->key()) {
    case Qt::Key_Escape:
        fFilter->clear();
        fFilter->hide();
        update();
        emit FilterLeft(true);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        if (fFilter->text().isEmpty()) {
            fFilter->hide();
            update();
        }
        emit FilterLeft(false);
        return true;
    default:
        return QWidget::eventFilter(watched, event);
    }
}

void KsFtr::PlaceFilter()
{
    const int width = std::clamp(this->width() * kFilterShare / 100, kFilterMin, kFilterMax);
    fFilter->setGeometry(3, 2, std::min(width, this->width() - 6), height() - 4);
}

QSize KsFtr::sizeHint() const
{
    return QSize(100, PaneBevel::Height(font()));
}

void KsFtr::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QString text = QString::fromStdString(fText);
    if (!FilterShown()) {
        PaneBevel::Draw(painter, rect(), PaneBevel::kPanelColor, kTextColor, text);
        return;
    }
    // The summary moves right of the field, on the same baseline.
    PaneBevel::Draw(painter, rect(), PaneBevel::kPanelColor, kTextColor, QString());
    const QFontMetricsF metrics(painter.font());
    painter.setPen(kTextColor);
    painter.drawText(fFilter->geometry().right() + 9, int(std::ceil(metrics.ascent())) + 5, text);
}

void KsFtr::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    PlaceBar();
    PlaceFilter();
}

void KsFtr::mousePressEvent(QMouseEvent *event)
{
    QWidget::mousePressEvent(event);
    emit Clicked();
}

} // namespace kestrin
