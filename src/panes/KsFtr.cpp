#include "panes/KsFtr.h"

#include "panes/PaneBevel.h"
#include "widgets/StatusBar.h"

#include <QMouseEvent>
#include <QPainter>

namespace kestrin {

namespace {

const QColor kTextColor(78, 89, 126);

} // namespace

KsFtr::KsFtr(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
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

QSize KsFtr::sizeHint() const
{
    return QSize(100, PaneBevel::Height(font()));
}

void KsFtr::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    PaneBevel::Draw(painter,
                    rect(),
                    PaneBevel::kPanelColor,
                    kTextColor,
                    QString::fromStdString(fText));
}

void KsFtr::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    PlaceBar();
}

void KsFtr::mousePressEvent(QMouseEvent *event)
{
    QWidget::mousePressEvent(event);
    emit Clicked();
}

} // namespace kestrin
