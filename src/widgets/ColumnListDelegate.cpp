#include "widgets/ColumnListDelegate.h"

#include "widgets/ColumnListModel.h"
#include "widgets/ColumnListView.h"

#include <QHeaderView>
#include <QPainter>
#include <algorithm>

namespace kestrin {

namespace {

constexpr int kIndentPerLevel = 20;
// The expander triangle's side, in pixels.
constexpr qreal kExpanderSize = 9;

// A triangle pointing right, turned down when its row is open.
void DrawExpander(QPainter *painter, const QRect &cell, bool expanded, const QColor &color)
{
    const qreal half = kExpanderSize / 2;
    const QPolygonF triangle(
        {QPointF(-half / 2, -half), QPointF(-half / 2, half), QPointF(half / 2 + 1, 0)});
    painter->translate(QRectF(cell).center());
    if (expanded)
        painter->rotate(90);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    painter->drawPolygon(triangle);
}

} // namespace

ColumnListDelegate::ColumnListDelegate(ColumnListView *view,
                                       const ColumnListModel *model,
                                       bool hierarchical)
    : QAbstractItemDelegate(view)
    , fView(view)
    , fModel(model)
    , fHierarchical(hierarchical)
{}

void ColumnListDelegate::paint(QPainter *painter,
                               const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    CLVListItem *item = fModel->ItemFor(index);
    if (!item)
        return;
    const bool selected = option.state & QStyle::State_Selected;
    const int column = index.column();
    QRect rect = option.rect;

    painter->save();
    painter->setClipRect(option.rect, Qt::IntersectClip);
    if (fHierarchical && column == fView->IndentedColumn()) {
        const int indent = std::min(rect.width(), int(item->OutlineLevel()) * kIndentPerLevel);
        if (indent > 0) {
            const QPalette::ColorRole role = selected ? QPalette::Highlight : QPalette::Base;
            painter->fillRect(QRect(rect.left(), rect.top(), indent, rect.height()),
                              fView->palette().color(role));
            rect.setLeft(rect.left() + indent);
        }
    }
    if (!rect.isEmpty())
        fView->DrawCell(*painter, rect, *item, index.row(), column, selected);
    painter->restore();

    if (fHierarchical && item->IsSuperItem() && column == fModel->ExpanderColumn()) {
        painter->save();
        painter->setClipRect(option.rect, Qt::IntersectClip);
        DrawExpander(painter,
                     option.rect,
                     item->IsExpanded(),
                     fView->palette().color(QPalette::Text));
        painter->restore();
    }
}

QSize ColumnListDelegate::sizeHint(const QStyleOptionViewItem &, const QModelIndex &index) const
{
    return QSize(fView->header()->sectionSize(index.column()), fView->RowHeight());
}

} // namespace kestrin
