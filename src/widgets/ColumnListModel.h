#pragma once

#include "widgets/CLVListItem.h"

#include <QAbstractItemModel>
#include <QString>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace kestrin {

// Column flags, the values of the BeOS widget that Kestrin's tables use.
inline constexpr uint32_t CLV_SORT_KEYABLE = 0x0001;      // a click on its label sorts by it
inline constexpr uint32_t CLV_NOT_MOVABLE = 0x0002;       // stays where it was added
inline constexpr uint32_t CLV_NOT_RESIZABLE = 0x0004;     // keeps its width
inline constexpr uint32_t CLV_LOCK_AT_BEGINNING = 0x0008; // nothing can be moved before it
inline constexpr uint32_t CLV_EXPANDER = 0x0100;          // holds the expanders of the tree form

enum CLVSortMode { Ascending = 0, Descending = 1, NoSort = 2 };

// How one change of the top-level rows moved the rows that stayed: what a
// view needs to keep the row at its top where it was.
struct RowShift
{
    // (index, count): `count` rows were inserted before the row that had
    // `index`, ascending by index.
    std::vector<std::pair<int, int>> inserted;
    // (first, last): the rows from `first` to `last` were removed, ascending.
    std::vector<std::pair<int, int>> removed;

    // Where the row that was at `row` is now; for a row that was removed,
    // where the first row after it that stayed is.
    int Moved(int row) const;
};

// The rows and columns of a ColumnListView, as a Qt item model, and their
// order: the sort key and mode and the functions that sort by them.
//
// The model is virtual: it stores row objects, not data. A QModelIndex carries
// its CLVListItem in internalPointer(), data() asks the row for ColumnText,
// and the view paints the rows. Top-level rows live in one vector; in the
// hierarchical form a row's sub-rows are its fSubitems.
//
// The model links no widget: whoever keeps the rows (a view, or a pane's
// core that a view shows) changes them here, and every view of the model
// follows through its signals.
//
// Every row knows its position among its siblings (CLVListItem::fRow) so that
// IndexOf and parent() are constant time. Top-level positions are renumbered
// lazily: an insertion or removal only marks the rows after it stale, and the
// first question about one of them renumbers the stale tail once. Sub-row
// positions are kept current as they change.
//
// Changes that touch a few contiguous ranges are announced with Qt's row
// insertion and removal signals; a batch scattered over many places is done
// in one pass over the vector inside a layout change, with the persistent
// indexes (the view's selection, current row, expanded rows) moved to where
// their rows went.
//
// GUI thread only: the model, its columns and every row in it belong to the
// GUI thread.
class ColumnListModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    using Rows = std::vector<std::unique_ptr<CLVListItem>>;
    using CompareFunc = int (*)(const CLVListItem *a, const CLVListItem *b, int32_t sortKey);
    // Puts top-level rows in the order the compare function gives them, in
    // a way of its own (faster, knowing the rows).
    using SortRowsFunc = void (*)(Rows &rows, int32_t sortKey, bool descending);

    struct Column
    {
        QString label;
        float minWidth = 0;
        uint32_t flags = 0;
    };

    explicit ColumnListModel(bool hierarchical, QObject *parent = nullptr);
    ~ColumnListModel() override;

    int AddColumn(const QString &label, float minWidth, uint32_t flags);
    void SetColumnLabel(int column, const QString &label);
    int CountColumns() const { return int(fColumns.size()); }
    // Null for a column that does not exist.
    const Column *ColumnAt(int column) const;
    // The first column flagged CLV_EXPANDER, -1 for none.
    int ExpanderColumn() const;
    // Whether the user may change the display order `before` into `after`:
    // CLV_NOT_MOVABLE columns stay where they are, and only columns that
    // were before a CLV_LOCK_AT_BEGINNING column may be before it.
    bool OrderAllowed(const std::vector<int> &before, const std::vector<int> &after) const;

    // Sorting. Setting the key or mode does not sort; SortItems does.
    // `sortRows`, where given, sorts a flat list faster than the compare
    // function alone could, in the same order.
    void SetSortFunction(CompareFunc compare, SortRowsFunc sortRows = nullptr);
    CompareFunc SortFunction() const { return fCompare; }
    void SetSortKey(int column);
    int SortKey() const { return fSortKey; }
    void SetSortMode(CLVSortMode mode);
    CLVSortMode SortMode() const { return fSortMode; }
    // Sorts every row by the key and mode (nothing in NoSort mode, without
    // a compare function or without a key that is a column); the rows stay
    // the same objects.
    void SortItems();

    // Top-level rows. Each change says what it moves (RowsAboutToMove and
    // RowsMoved) around Qt's own signals.
    void AddItem(std::unique_ptr<CLVListItem> item, int index);
    // Appends all of them in one step.
    void AddList(Rows items);
    // The same with each row's SearchByte given (as many as rows, none
    // null): a million rows are not read again.
    void AddList(Rows items, std::vector<char> searchBytes);
    // Inserts every row before the row that had the given index when the
    // call began (CountItems() for the end); rows given the same index keep
    // their order. One pass over the list, whatever the number of rows.
    void InsertItems(std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> items);
    // Removes the rows at the given indexes (any order, duplicates and rows
    // that do not exist left out) in one pass and hands them back in
    // ascending index order.
    Rows RemoveItems(std::vector<int> indexes);
    // Deletes every row.
    void MakeEmpty() { Clear(); }
    // Rows whose numbers are stale after a change (IndexOf numbers them
    // all on its first call): `count` more of them are numbered now, so
    // that a million rows are numbered a slice per turn of the event loop.
    // False once none is left.
    bool NumberSome(size_t count);
    // Numbers the rows from `first` to `last` now (the rows a view is about
    // to ask for), leaving the others stale.
    void NumberRange(int first, int last);
    // Takes every top-level row out, in order, without deleting them, and
    // their SearchBytes with them: the model is reset, as by Clear. Flat
    // rows are not touched.
    Rows TakeAll(std::vector<char> *searchBytes = nullptr);
    // A row's look changed (RowsRepaint); -1 for every row.
    void InvalidateItem(int index);
    void InvalidateItem(const CLVListItem *item) { InvalidateItem(IndexOf(item)); }
    void InvalidateAll() { emit RowsRepaint(-1); }

    int CountItems() const { return int(fItems.size()); }
    // Every top-level row's SearchByte, in the rows' order.
    const std::vector<char> &SearchBytes() const { return fSearchBytes; }
    CLVListItem *ItemAt(int index) const;
    // -1 unless `item` is a top-level row of this model.
    int IndexOf(const CLVListItem *item) const;
    // Whether `item` is a row of this model at any level.
    bool Contains(const CLVListItem *item) const;
    CLVListItem *ItemFor(const QModelIndex &index) const;
    // Every row, depth first.
    std::vector<CLVListItem *> FullList() const;
    // `indexes` without duplicates and rows that do not exist, ascending.
    std::vector<int> ValidRows(std::vector<int> indexes) const;

    // The top-level row `item` lives under (itself at the top level).
    static const CLVListItem *TopAncestor(const CLVListItem *item);
    // Whether `item` lives somewhere under `ancestor`.
    static bool IsUnder(const CLVListItem *item, const CLVListItem *ancestor);
    // Invalid when `item` is not shown by this model.
    QModelIndex IndexFor(const CLVListItem *item, int column = 0) const;

    // Deletes every row.
    void Clear();

    // `superitem` must be a row of this model; it becomes a super-item.
    void AddUnder(std::unique_ptr<CLVListItem> item, CLVListItem *superitem);
    Rows RemoveSubitems(CLVListItem *superitem);
    void SetExpanded(CLVListItem *item, bool expanded) { item->fExpanded = expanded; }

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section,
                        Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    // The sort key or mode changed.
    void SortOrderChanged();
    // Top-level rows are about to come or go: none before `firstChanged`
    // moves, and the rows at `leaving` (ascending) are about to go.
    void RowsAboutToMove(int firstChanged, const std::vector<int> &leaving);
    // They came or went.
    void RowsMoved(const RowShift &shift);
    // The look of the row at `index` changed; of every row for -1. Not
    // dataChanged: a view would walk every row of a million for a change
    // of all of them.
    void RowsRepaint(int index);

private:
    // A persistent index as it was before a layout change, with the row of
    // the top-level row it lives under (its own row at the top level).
    struct Persistent
    {
        QModelIndex index;
        int topRow;
        bool topLevel;
    };

    // Inserts `rows`, in order, before the row at `index` (0..CountItems()).
    void InsertRange(int index, Rows rows);
    void InsertRange(int index, Rows rows, std::vector<char> bytes);
    // Inserts each row before the row that had its index (0..CountItems())
    // when the call began; rows given the same index keep their order.
    void InsertScattered(std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> rows);
    // `indexes` must be ascending, without duplicates and within range, and
    // `runs` the (first, last) runs they make. The rows come back in the
    // same order.
    Rows RemoveSorted(const std::vector<int> &indexes, const std::vector<std::pair<int, int>> &runs);

    bool HoldsAt(int row, const CLVListItem *item) const;
    void MarkStale(size_t from) const;
    void Renumber() const;
    // The row's position among its siblings.
    int RowOf(const CLVListItem *item) const;
    std::vector<Persistent> SavePersistent() const;
    // Sorts the top-level rows and, in the hierarchical form, every row's
    // sub-rows among themselves, with StableMergeSort; `fSortRows`, where
    // given, sorts the top-level rows instead.
    void Sort(int32_t key, bool descending);
    void SortRows(Rows &rows, CompareFunc compare, int32_t key, bool descending);
    // Makes `item` the row at `row` under `superitem` (null: the top level),
    // its sub-rows one outline level deeper each.
    static void Adopt(CLVListItem *item, CLVListItem *superitem, int row);
    // Detaches a row that leaves the model; it and its sub-rows close.
    static void Release(CLVListItem *item);

    bool fHierarchical;
    std::vector<Column> fColumns;
    CompareFunc fCompare = nullptr;
    SortRowsFunc fSortRows = nullptr;
    int fSortKey = -1;
    CLVSortMode fSortMode = Ascending;
    Rows fItems;
    std::vector<char> fSearchBytes; // beside fItems, always as long

    // Top-level rows from this index on may have a stale fRow.
    mutable size_t fStaleFrom = 0;
};

} // namespace kestrin
