#include "panes/KsHeader.h"

#include "panes/PaneBevel.h"

#include <QMouseEvent>
#include <QPainter>

namespace kestrin {

KsHeader::KsHeader(const std::string &text, const rgb_color &focusColor, QWidget *parent)
    : QWidget(parent)
    , fText(text)
    , fFocusColor(focusColor)
    , fBackground(PaneBevel::kPanelColor)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void KsHeader::SetText(const std::string &text)
{
    fText = text;
    update();
}

void KsHeader::SetNote(const std::string &note)
{
    if (note == fNote)
        return;
    fNote = note;
    setToolTip(QString::fromStdString(note));
    update();
}

void KsHeader::SetSelected(bool selected)
{
    fSelected = selected;
    fBackground = selected ? fFocusColor : PaneBevel::kPanelColor;
    update();
}

void KsHeader::SetFocusColor(const rgb_color &color)
{
    fBackground = color;
    update();
}

void KsHeader::SetFocusColors(const rgb_color &color)
{
    fFocusColor = color;
    SetSelected(fSelected);
}

QSize KsHeader::sizeHint() const
{
    return QSize(100, PaneBevel::Height(font()));
}

void KsHeader::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QString text = QString::fromUtf8(fText.data(), qsizetype(fText.size()));
    if (!fNote.empty())
        text += "   [" + QString::fromStdString(fNote) + "]";
    PaneBevel::Draw(painter, rect(), fBackground, Qt::black, text);
}

void KsHeader::mousePressEvent(QMouseEvent *event)
{
    QWidget::mousePressEvent(event);
    emit Clicked();
}

} // namespace kestrin
