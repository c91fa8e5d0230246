#include "viewer/TextPager.h"

#include "platform/Background.h"
#include "viewer/RowText.h"
#include "viewer/TextFinder.h"
#include "viewer/TextIndex.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTextLayout>
#include <algorithm>
#include <climits>
#include <cmath>

namespace kestrin {

namespace {

// The vertical scroll bar's steps: the file's bytes, at most this many.
constexpr int64_t kScrollSteps = 1 << 30;
constexpr qreal kUnwrapped = 1e7;

} // namespace

TextPager::TextPager(std::shared_ptr<TextIndex> index, QWidget *parent)
    : QAbstractScrollArea(parent)
    , fIndex(std::move(index))
{
    setObjectName("TextScroll");
    setAccessibleName("Text");
    viewport()->setObjectName("textView");
    viewport()->setBackgroundRole(QPalette::Base);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setFocusPolicy(Qt::StrongFocus);
    connect(verticalScrollBar(), &QScrollBar::actionTriggered, this, &TextPager::ScrollBarAction);
    SyncScrollBars();
}

TextPager::~TextPager()
{
    fSearch.Stop();
    fIndex->Stop();
}

void TextPager::SetWrap(Wrap wrap)
{
    fWrap = wrap;
    SyncScrollBars();
    viewport()->update();
}

void TextPager::IndexGrew()
{
    const bool firstScreen = !fShowing && fIndex->FirstBytesRead();
    fShowing = fShowing || firstScreen;
    SyncScrollBars();
    viewport()->update();
    if (firstScreen)
        emit FirstScreenRead();
}

int TextPager::RowHeight() const
{
    return QFontMetrics(font()).lineSpacing();
}

QSize TextPager::TextSize() const
{
    const auto [start, length] = fIndex->LongestRow();
    const QString widest = RowText::Decode(fIndex->Read(start, length));
    // Rows are laid out with fractional advances: rounded down, the widest
    // would lose its last character.
    const int width = std::max(1,
                               int(std::ceil(QFontMetricsF(font()).horizontalAdvance(widest))) + 1);
    const int64_t height = fIndex->KnownRows() * RowHeight();
    return QSize(width, int(std::min<int64_t>(height, INT_MAX / 2)));
}

int TextPager::RowsOnScreen() const
{
    return std::max(1, viewport()->height() / RowHeight());
}

QStringList TextPager::ShownRows() const
{
    QStringList rows;
    int64_t row = fTop;
    for (int i = 0; fShowing && i < RowsOnScreen() && row < fIndex->Size(); i++) {
        TextIndex::Row shown = fIndex->RowAt(row);
        rows << RowText::Decode(shown.bytes);
        row = shown.next;
    }
    return rows;
}

void TextPager::SetTop(int64_t top)
{
    fTop = std::clamp<int64_t>(top, 0, std::max<int64_t>(0, fIndex->Size()));
    SyncScrollBars();
    viewport()->update();
}

void TextPager::StepRows(int count)
{
    int64_t top = fTop;
    for (; count > 0; count--) {
        const int64_t next = fIndex->NextRow(top);
        if (next >= fIndex->Size())
            break;
        top = next;
    }
    for (; count < 0; count++)
        top = fIndex->PreviousRow(top);
    SetTop(top);
}

void TextPager::ScrollToStart()
{
    SetTop(0);
}

void TextPager::ScrollToEnd()
{
    // Found backwards from the end of the file, index or not.
    int64_t top = fIndex->RowContaining(fIndex->Size() - 1);
    for (int i = 1; i < RowsOnScreen() && top > 0; i++)
        top = fIndex->PreviousRow(top);
    SetTop(top);
}

int64_t TextPager::OffsetOfValue(int value) const
{
    const int maximum = verticalScrollBar()->maximum();
    return maximum <= 0 ? 0 : int64_t(double(value) / maximum * double(fIndex->Size()));
}

int TextPager::ValueOfOffset(int64_t offset) const
{
    const int maximum = verticalScrollBar()->maximum();
    return fIndex->Size() <= 0 ? 0 : int(double(offset) / double(fIndex->Size()) * maximum);
}

void TextPager::SyncScrollBars()
{
    fSyncing = true;
    QScrollBar *vertical = verticalScrollBar();
    const int64_t size = fShowing ? fIndex->Size() : 0;
    vertical->setRange(0, int(std::min<int64_t>(size, kScrollSteps)));
    vertical->setPageStep(
        std::max(1, int(std::min<int64_t>(vertical->maximum(), RowsOnScreen() * 80))));
    vertical->setValue(ValueOfOffset(fTop));
    QScrollBar *horizontal = horizontalScrollBar();
    const int width = fWrap == Wrap::None && fShowing ? TextSize().width() : 0;
    horizontal->setRange(0, std::max(0, width - viewport()->width()));
    horizontal->setPageStep(viewport()->width());
    horizontal->setSingleStep(QFontMetrics(font()).averageCharWidth() * 4);
    fSyncing = false;
}

// The bar stands for bytes; its arrows and pages move by rows instead.
void TextPager::ScrollBarAction(int action)
{
    if (!fShowing)
        return;
    switch (action) {
    case QAbstractSlider::SliderSingleStepAdd:
        StepRows(1);
        break;
    case QAbstractSlider::SliderSingleStepSub:
        StepRows(-1);
        break;
    case QAbstractSlider::SliderPageStepAdd:
        StepRows(RowsOnScreen() - 1);
        break;
    case QAbstractSlider::SliderPageStepSub:
        StepRows(1 - RowsOnScreen());
        break;
    case QAbstractSlider::SliderToMinimum:
        ScrollToStart();
        break;
    case QAbstractSlider::SliderToMaximum:
        ScrollToEnd();
        break;
    default:
        return;
    }
    verticalScrollBar()->setSliderPosition(ValueOfOffset(fTop));
}

void TextPager::scrollContentsBy(int, int dy)
{
    if (dy != 0 && !fSyncing) {
        const int64_t top = fIndex->RowContaining(OffsetOfValue(verticalScrollBar()->value()));
        fTop = top;
    }
    viewport()->update();
}

void TextPager::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    SyncScrollBars();
}

void TextPager::keyPressEvent(QKeyEvent *event)
{
    if (!fShowing) {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    const bool control = event->modifiers() & Qt::ControlModifier;
    QScrollBar *horizontal = horizontalScrollBar();
    switch (event->key()) {
    case Qt::Key_Down:
        StepRows(1);
        break;
    case Qt::Key_Up:
        StepRows(-1);
        break;
    case Qt::Key_PageDown:
        StepRows(RowsOnScreen() - 1);
        break;
    case Qt::Key_PageUp:
        StepRows(1 - RowsOnScreen());
        break;
    case Qt::Key_Left:
        horizontal->triggerAction(QAbstractSlider::SliderSingleStepSub);
        break;
    case Qt::Key_Right:
        horizontal->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        break;
    case Qt::Key_Home:
        if (control)
            ScrollToStart();
        else
            horizontal->setValue(0);
        break;
    case Qt::Key_End:
        if (control)
            ScrollToEnd();
        else
            horizontal->setValue(horizontal->maximum());
        break;
    default:
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    event->accept();
}

void TextPager::wheelEvent(QWheelEvent *event)
{
    const int notches = event->angleDelta().y() / 120;
    if (notches != 0 && fShowing)
        StepRows(-3 * notches);
    else
        QAbstractScrollArea::wheelEvent(event);
}

void TextPager::paintEvent(QPaintEvent *)
{
    if (!fShowing)
        return;
    QPainter painter(viewport());
    const int width = viewport()->width();
    const qreal left = fWrap == Wrap::None ? -horizontalScrollBar()->value() : 0;
    QTextOption option;
    option.setWrapMode(fWrap == Wrap::Words      ? QTextOption::WrapAtWordBoundaryOrAnywhere
                       : fWrap == Wrap::Anywhere ? QTextOption::WrapAnywhere
                                                 : QTextOption::NoWrap);
    qreal y = 0;
    for (int64_t row = fTop; y < viewport()->height() && row < fIndex->Size();) {
        const TextIndex::Row shown = fIndex->RowAt(row);
        QTextLayout layout(RowText::Decode(shown.bytes), font());
        layout.setTextOption(option);
        if (fMatch >= row && fMatch < shown.next) {
            QTextLayout::FormatRange range;
            const size_t at = size_t(fMatch - row);
            range.start = int(RowText::CharactersBefore(shown.bytes, at));
            range.length = int(RowText::CharactersBefore(shown.bytes, at + fMatchLength))
                           - range.start;
            range.format.setBackground(palette().highlight());
            range.format.setForeground(palette().highlightedText());
            layout.setFormats({range});
        }
        layout.beginLayout();
        qreal height = 0;
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(fWrap == Wrap::None ? kUnwrapped : width);
            line.setPosition(QPointF(0, height));
            height += line.height();
        }
        layout.endLayout();
        layout.draw(&painter, QPointF(left, y));
        y += std::max<qreal>(height, RowHeight());
        row = shown.next;
    }
}

void TextPager::Find(const QString &text, bool forward)
{
    Search(text, forward, fMatch < 0 ? fTop : (forward ? fMatch + 1 : fMatch));
}

void TextPager::FindFromTop(const QString &text)
{
    const bool shownAtTop = fMatch >= fTop && text.toUtf8() == fPattern
                            && fIndex->RowContaining(fMatch) == fTop;
    Search(text, true, shownAtTop ? fMatch + 1 : fTop);
}

void TextPager::Search(const QString &text, bool forward, int64_t from)
{
    // A newer find replaces the one under way, whose answer is dropped.
    fSearch.Stop();
    fPattern = text.toUtf8();
    const std::string pattern = fPattern.toStdString();
    fSearch = platform::Background::Run(
        this,
        [index = fIndex, pattern, from, forward](const std::atomic<bool> &stop) {
            return TextFinder::Find(*index, pattern, from, forward, &stop);
        },
        [this, length = int(pattern.size())](int64_t found) { ShowMatch(found, length); });
}

// A match of `length` bytes at `offset`; none when `offset` is negative.
void TextPager::ShowMatch(int64_t offset, int length)
{
    const bool found = offset >= 0;
    // The old match goes either way: left in place, it would be drawn with
    // a length that is not its own.
    fMatch = offset;
    fMatchLength = found ? length : 0;
    if (found) {
        const int64_t row = fIndex->RowContaining(offset);
        SetTop(row);
        if (fWrap == Wrap::None) {
            const std::string bytes = fIndex->RowAt(row).bytes;
            const QString before = RowText::Decode(bytes).left(
                RowText::CharactersBefore(bytes, size_t(offset - row)));
            const int x = QFontMetrics(font()).horizontalAdvance(before);
            QScrollBar *horizontal = horizontalScrollBar();
            if (x < horizontal->value() || x > horizontal->value() + viewport()->width() / 2)
                horizontal->setValue(x - viewport()->width() / 4);
        }
    }
    viewport()->update();
    emit SearchFinished(found);
}

} // namespace kestrin
