#pragma once

#include "widgets/CLVListItem.h"
#include "widgets/ColumnListModel.h"

#include <QTreeView>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace kestrin {

class ColumnListDelegate;

// A list of rows in columns: the multi-column list of every pane, the tree
// and the attribute list. Built on Qt's model/view so that a million rows
// cost nothing per paint: the model (ColumnListModel) is virtual, the view
// paints the rows (DrawCell; rows that draw themselves through
// CLVPaintedItem::DrawItemColumn by default), rows are of uniform height, and
// only visible rows are touched when painting.
//
// The view's rows live in its model, which whoever keeps them may change
// directly: the view follows, keeping the row at its top where it was and
// dropping the selection of a row that goes.
//
// Columns have a label, a width, a minimum width and flags; the user can
// resize them, move them (all but CLV_NOT_MOVABLE ones, and none before a
// CLV_LOCK_AT_BEGINNING one) and click a CLV_SORT_KEYABLE label to sort: a
// click on the current key's label turns ascending into descending and back;
// a click on another makes it the key, ascending. The header shows the sort
// indicator on the key's label (none in NoSort mode).
//
// Sorting is a stable merge sort that keeps the left row whenever
// compare(left, right, key) <= 0 (ascending) or >= 0 (descending); in the
// hierarchical form each row's sub-rows are sorted among themselves. The
// compare function need not be a strict weak order.
//
// Single selection. Return, Enter and a double click invoke the selected
// row. Both scroll bars show when needed. QAbstractItemView's own type-ahead
// is off: subclasses do their own.
//
// Flat form: rows are addressed by index. Hierarchical form (a tree):
// top-level rows by index, sub-rows through AddUnder and their super-item;
// the column flagged CLV_EXPANDER draws the expander of super-items, and the
// column after it is drawn indented by 20 units per outline level (the rect
// given to DrawItemColumn is the indented one). A click on an expander or
// the Right/Left keys on a super-item expand or collapse it.
//
// GUI thread only: the view, its model and its rows belong to the GUI thread.
class ColumnListView : public QTreeView
{
    Q_OBJECT

public:
    using CompareFunc = int (*)(const CLVListItem *a, const CLVListItem *b, int32_t sortKey);
    using SortRowsFunc = void (*)(std::vector<std::unique_ptr<CLVListItem>> &rows,
                                  int32_t sortKey,
                                  bool descending);

    explicit ColumnListView(QWidget *parent = nullptr, bool hierarchical = false);
    ~ColumnListView() override;

    bool IsHierarchical() const { return fHierarchical; }
    // The rows and columns shown; the view's child.
    ColumnListModel &ListModel() const { return *fModel; }

    // Columns, in the order added; the index is the logical column (and the
    // sort key that the compare function receives).
    int AddColumn(const QString &label, float width, float minWidth, uint32_t flags);
    int CountColumns() const;
    QString ColumnLabel(int column) const;
    void SetColumnLabel(int column, const QString &label);
    uint32_t ColumnFlags(int column) const;
    float ColumnMinWidth(int column) const;
    // -1 for a column that does not exist.
    float ColumnWidth(int column) const;
    // Below the minimum becomes the minimum; a column that does not exist is
    // ignored. Calls ColumnWidthChanged only for the user's own resizing.
    void SetColumnWidth(int column, float width);
    // Logical columns from left to right as shown.
    std::vector<int> DisplayOrder() const;
    void SetDisplayOrder(const std::vector<int> &order);
    void SetColumnLabelsVisible(bool visible);

    // Sorting. Setting the key or mode does not sort; SortItems does.
    // `sortRows`, where given, sorts a flat list faster than the compare
    // function alone could, in the same order.
    void SetSortFunction(CompareFunc compare, SortRowsFunc sortRows = nullptr);
    CompareFunc SortFunction() const;
    void SetSortKey(int column);
    int SortKey() const;
    void SetSortMode(CLVSortMode mode);
    CLVSortMode SortMode() const;
    // Sorts every row by the key and mode (nothing in NoSort mode, without
    // a compare function or without a key that is a column); the selection
    // and the rows stay the same objects.
    void SortItems();

    // Rows, which its model owns.
    int CountItems() const;
    CLVListItem *ItemAt(int index) const;
    // Every row's CLVListItem::SearchByte, in the rows' order.
    const std::vector<char> &SearchBytes() const;
    // -1 when the row is not a top-level row of this view. Constant time
    // except right after rows were inserted or removed before it.
    int IndexOf(const CLVListItem *item) const;
    // The top-level row under a point of the viewport, -1 for none.
    int IndexOf(const QPoint &viewportPoint) const;
    // The row's rectangle in viewport coordinates (empty when not shown).
    QRect ItemFrame(int index) const;

    void AddItem(std::unique_ptr<CLVListItem> item);
    void AddItem(std::unique_ptr<CLVListItem> item, int index);
    // Appends all of them in one step.
    void AddList(std::vector<std::unique_ptr<CLVListItem>> items);
    // Inserts every row before the row that had the given index when the
    // call began (CountItems() for the end); rows given the same index keep
    // their order. One pass over the list, whatever the number of rows.
    void InsertItems(std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> items);
    std::unique_ptr<CLVListItem> RemoveItem(int index);
    // Removes the rows at the given indexes (any order, no duplicates) in
    // one pass and hands them back in ascending index order.
    std::vector<std::unique_ptr<CLVListItem>> RemoveItems(std::vector<int> indexes);
    // Deletes every row.
    void MakeEmpty();
    // Repaints a row after it changed.
    void InvalidateItem(int index);
    void InvalidateItem(const CLVListItem *item);
    // Repaints every row shown.
    void InvalidateAll();

    // The hierarchical form. The row goes last under `superitem` (a row of
    // this view, which becomes a super-item), one outline level deeper.
    void AddUnder(std::unique_ptr<CLVListItem> item, CLVListItem *superitem);
    // Removes and hands back every sub-row of a row.
    std::vector<std::unique_ptr<CLVListItem>> RemoveSubitems(CLVListItem *superitem);
    void Expand(CLVListItem *item);
    void Collapse(CLVListItem *item);
    // Every row, depth first, expanded or not.
    std::vector<CLVListItem *> FullList() const;

    // Selection. In the flat form CurrentSelection is the selected row's
    // index; in the hierarchical form, the index of a selected top-level row
    // (-1 for a sub-row: use SelectedItem).
    int CurrentSelection() const;
    CLVListItem *SelectedItem() const;
    // A row that is not in the view leaves the selection as it is.
    void Select(int index);
    void Select(CLVListItem *item);
    void DeselectAll();
    void ScrollTo(int index);
    void ScrollTo(CLVListItem *item);
    void ScrollToSelection();

    // The height of every row; at least 20 units.
    int RowHeight() const { return fRowHeight; }
    // In the tree, the column drawn indented by each row's outline level:
    // the first shown after the expander column; -1 for none.
    int IndentedColumn() const;
    void SetRowHeight(int height);

signals:
    // The Qt side of SelectionChanged and Invoked, for owners that do not
    // subclass; each is emitted right after its hook.
    void selectionChangedSignal();
    void invoked(int index);

protected:
    // Hooks for subclasses; the defaults do nothing.
    virtual void SelectionChanged();
    // Return, Enter or a double click on a row; `index` is the row's index.
    // In the hierarchical form a sub-row gives -1: use SelectedItem().
    virtual void Invoked(int index);
    // The user changed the sort key or mode with a click on a label; the
    // rows are sorted already.
    virtual void SortChanged();
    // The user resized a column (called for each step of the drag).
    virtual void ColumnWidthChanged(int column, float width);
    // A super-item is about to open (its sub-rows can be added now).
    virtual void ExpandRequested(CLVListItem *item);

    void keyboardSearch(const QString &search) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    // What was at the top of the view before rows came or went above it:
    // the top-level row (and in the tree, the row object) and how far it was
    // scrolled past.
    struct TopAnchor
    {
        int row = -1;
        CLVListItem *item = nullptr;
        int offset = 0;
    };

protected:
    // Rows draw every pixel of their cells: no Qt row background or focus frame.
    void drawRow(QPainter *painter,
                 const QStyleOptionViewItem &option,
                 const QModelIndex &index) const override;

public:
    // Paints the cell of `column` of `item`, the row at `row` among its
    // siblings, into `rect`, which must be filled completely (the view
    // paints no background of its own). Rows that draw themselves do so;
    // a view of other rows paints them itself.
    virtual void DrawCell(QPainter &painter,
                          const QRect &rect,
                          CLVListItem &item,
                          int row,
                          int column,
                          bool selected) const;

private:
    void ColumnsAdded(int first, int last);
    void RowsAboutToMove(int firstChanged, const std::vector<int> &leaving);
    void RowsMoved(const RowShift &shift);
    void RowsRepaint(int index);
    void HeaderClicked(int column);
    void SectionResized(int column, int oldWidth, int newWidth);
    void SectionMoved(int column, int oldVisual, int newVisual);
    void UpdateSortIndicator();
    CLVListItem *ExpanderAt(const QPoint &viewportPoint) const;
    bool StepIntoTree(bool open);
    void Invoke(CLVListItem *item);
    int TopLevelIndexOf(const CLVListItem *item) const;
    int ScrollUnit() const;
    int RowWidth() const;
    QRect RowRect(const QModelIndex &index) const;
    void ShowRow(const QModelIndex &index);
    TopAnchor AnchorTop(int firstChanged) const;
    void RestoreTop(const TopAnchor &anchor, int shift);

    // Both are children of the view and go with it; the model owns the rows.
    ColumnListModel *fModel;
    ColumnListDelegate *fDelegate;
    bool fHierarchical;
    int fRowHeight = 20;
    // The top of the view while the model moves rows.
    TopAnchor fMovingTop;
    // The row SelectionChanged last reported: always a row of the view or
    // null, since a row leaving the view leaves the selection first.
    CLVListItem *fSelected = nullptr;
    // The column order that the user's next move is checked against.
    std::vector<int> fDisplayOrder;
    // Set while the view itself resizes or moves columns, so that only the
    // user's own changes are reported, clamped or undone.
    bool fSettingWidth = false;
    bool fClampingWidth = false;
    bool fMovingColumns = false;
};

} // namespace kestrin
