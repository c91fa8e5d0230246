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

// The rows and columns of a ColumnListView, as a Qt item model.
//
// The model is virtual: it stores row objects, not data. A QModelIndex carries
// its CLVListItem in internalPointer(), data() asks the row for ColumnText,
// and rows paint themselves through the view's delegate. Top-level rows live
// in one vector; in the hierarchical form a row's sub-rows are its fSubitems.
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

    // Inserts `rows`, in order, before the row at `index` (0..CountItems()).
    void InsertRange(int index, Rows rows);
    // Inserts each row before the row that had its index (0..CountItems())
    // when the call began; rows given the same index keep their order.
    void InsertScattered(std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> rows);
    // `indexes` must be ascending, without duplicates and within range. The
    // rows come back in the same order.
    Rows RemoveSorted(const std::vector<int> &indexes);
    // Deletes every row.
    void Clear();

    // `superitem` must be a row of this model; it becomes a super-item.
    void AddUnder(std::unique_ptr<CLVListItem> item, CLVListItem *superitem);
    Rows RemoveSubitems(CLVListItem *superitem);
    void SetExpanded(CLVListItem *item, bool expanded) { item->fExpanded = expanded; }

    // Sorts the top-level rows and, in the hierarchical form, every row's
    // sub-rows among themselves, with StableMergeSort.
    // `sortRows`, where given, sorts the top-level rows instead.
    void Sort(CompareFunc compare, SortRowsFunc sortRows, int32_t key, bool descending);

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section,
                        Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    // A persistent index as it was before a layout change, with the row of
    // the top-level row it lives under (its own row at the top level).
    struct Persistent
    {
        QModelIndex index;
        int topRow;
        bool topLevel;
    };

    bool HoldsAt(int row, const CLVListItem *item) const;
    void MarkStale(size_t from) const;
    void Renumber() const;
    // The row's position among its siblings.
    int RowOf(const CLVListItem *item) const;
    std::vector<Persistent> SavePersistent() const;
    void SortRows(Rows &rows, CompareFunc compare, int32_t key, bool descending);
    // Makes `item` the row at `row` under `superitem` (null: the top level),
    // its sub-rows one outline level deeper each.
    static void Adopt(CLVListItem *item, CLVListItem *superitem, int row);
    // Detaches a row that leaves the model; it and its sub-rows close.
    static void Release(CLVListItem *item);

    bool fHierarchical;
    std::vector<Column> fColumns;
    Rows fItems;
    std::vector<char> fSearchBytes; // beside fItems, always as long

    // Top-level rows from this index on may have a stale fRow.
    mutable size_t fStaleFrom = 0;
};

} // namespace kestrin
