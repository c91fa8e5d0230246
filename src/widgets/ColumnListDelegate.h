#pragma once

#include <QAbstractItemDelegate>

namespace kestrin {

class ColumnListModel;
class ColumnListView;

// Paints one cell of a ColumnListView by asking the view to draw it. In
// the tree, the column after the expander column is indented by the row's
// outline level (the indentation is filled in the list's own colours, since
// only the rect given is drawn), and the expander column gets the
// expander of a super-item on top of what its row drew.
//
// GUI thread only, a child of its view.
class ColumnListDelegate : public QAbstractItemDelegate
{
public:
    ColumnListDelegate(ColumnListView *view, const ColumnListModel *model, bool hierarchical);

    void paint(QPainter *painter,
               const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    ColumnListView *fView;
    const ColumnListModel *fModel;
    bool fHierarchical;
};

} // namespace kestrin
