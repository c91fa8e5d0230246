#include "widgets/ColumnListModel.h"

#include "widgets/StableMergeSort.h"

#include <algorithm>

namespace kestrin {

namespace {

// Up to this many separate places, a batch goes through Qt's row insertion
// and removal signals (one vector move each); beyond it, through one pass
// over the vector inside a layout change.
constexpr size_t kFewRanges = 4;

// The persistent indexes of a row that left the model point nowhere.
const QModelIndex kGone;

} // namespace

int RowShift::Moved(int row) const
{
    int moved = row;
    for (const auto &[index, count] : inserted) {
        if (index > row)
            break;
        moved += count;
    }
    for (const auto &[first, last] : removed) {
        if (first >= row)
            break;
        moved -= std::min(last + 1, row) - first;
    }
    return moved;
}

ColumnListModel::ColumnListModel(bool hierarchical, QObject *parent)
    : QAbstractItemModel(parent)
    , fHierarchical(hierarchical)
{}

ColumnListModel::~ColumnListModel() = default;

int ColumnListModel::AddColumn(const QString &label, float minWidth, uint32_t flags)
{
    const int column = CountColumns();
    beginInsertColumns(QModelIndex(), column, column);
    fColumns.push_back(Column{label, minWidth, flags});
    endInsertColumns();
    return column;
}

const ColumnListModel::Column *ColumnListModel::ColumnAt(int column) const
{
    if (column < 0 || column >= CountColumns())
        return nullptr;
    return &fColumns[size_t(column)];
}

int ColumnListModel::ExpanderColumn() const
{
    for (size_t column = 0; column < fColumns.size(); column++)
        if (fColumns[column].flags & CLV_EXPANDER)
            return int(column);
    return -1;
}

bool ColumnListModel::OrderAllowed(const std::vector<int> &before,
                                   const std::vector<int> &after) const
{
    if (before.size() != after.size())
        return true;
    for (size_t position = 0; position < before.size(); position++) {
        const Column *column = ColumnAt(before[position]);
        if (!column)
            continue;
        if ((column->flags & CLV_NOT_MOVABLE) && after[position] != before[position])
            return false;
        if (!(column->flags & CLV_LOCK_AT_BEGINNING))
            continue;
        const auto ahead = before.begin() + std::ptrdiff_t(position);
        for (int other : after) {
            if (other == before[position])
                break;
            if (std::find(before.begin(), ahead, other) == ahead)
                return false;
        }
    }
    return true;
}

void ColumnListModel::SetSortFunction(CompareFunc compare, SortRowsFunc sortRows)
{
    fCompare = compare;
    fSortRows = sortRows;
}

void ColumnListModel::SetSortKey(int column)
{
    fSortKey = column;
    emit SortOrderChanged();
}

void ColumnListModel::SetSortMode(CLVSortMode mode)
{
    fSortMode = mode;
    emit SortOrderChanged();
}

void ColumnListModel::SortItems()
{
    if (fSortMode == NoSort || !fCompare || !ColumnAt(fSortKey))
        return;
    Sort(fSortKey, fSortMode == Descending);
}

void ColumnListModel::AddItem(std::unique_ptr<CLVListItem> item, int index)
{
    if (!item)
        return;
    index = std::clamp(index, 0, CountItems());
    emit RowsAboutToMove(index, {});
    Rows rows;
    rows.push_back(std::move(item));
    InsertRange(index, std::move(rows));
    emit RowsMoved(RowShift{{{index, 1}}, {}});
}

void ColumnListModel::AddList(Rows items)
{
    std::erase(items, nullptr);
    if (items.empty())
        return;
    const int end = CountItems();
    const int count = int(items.size());
    emit RowsAboutToMove(end, {});
    InsertRange(end, std::move(items));
    emit RowsMoved(RowShift{{{end, count}}, {}});
}

void ColumnListModel::AddList(Rows items, std::vector<char> searchBytes)
{
    if (items.empty())
        return;
    const int end = CountItems();
    const int count = int(items.size());
    emit RowsAboutToMove(end, {});
    InsertRange(end, std::move(items), std::move(searchBytes));
    emit RowsMoved(RowShift{{{end, count}}, {}});
}

void ColumnListModel::InsertItems(std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> items)
{
    std::erase_if(items, [](const auto &entry) { return !entry.second; });
    if (items.empty())
        return;
    RowShift shift;
    const int count = CountItems();
    for (auto &[index, row] : items) {
        index = std::clamp(index, 0, count);
        shift.inserted.emplace_back(index, 1);
    }
    std::sort(shift.inserted.begin(), shift.inserted.end());
    emit RowsAboutToMove(shift.inserted.front().first, {});
    InsertScattered(std::move(items));
    emit RowsMoved(shift);
}

ColumnListModel::Rows ColumnListModel::RemoveItems(std::vector<int> indexes)
{
    indexes = ValidRows(std::move(indexes));
    if (indexes.empty())
        return {};
    RowShift shift;
    for (int index : indexes) {
        if (!shift.removed.empty() && shift.removed.back().second + 1 == index)
            shift.removed.back().second = index;
        else
            shift.removed.emplace_back(index, index);
    }
    emit RowsAboutToMove(indexes.front(), indexes);
    Rows removed = RemoveSorted(indexes, shift.removed);
    // Still holding the rows: a view's top row may be one of them.
    emit RowsMoved(shift);
    return removed;
}

void ColumnListModel::InvalidateItem(int index)
{
    if (index >= 0 && index < CountItems())
        emit RowsRepaint(index);
}

CLVListItem *ColumnListModel::ItemAt(int index) const
{
    if (index < 0 || index >= CountItems())
        return nullptr;
    return fItems[size_t(index)].get();
}

bool ColumnListModel::HoldsAt(int row, const CLVListItem *item) const
{
    return row >= 0 && size_t(row) < fItems.size() && fItems[size_t(row)].get() == item;
}

void ColumnListModel::MarkStale(size_t from) const
{
    fStaleFrom = std::min(fStaleFrom, from);
}

void ColumnListModel::Renumber() const
{
    for (size_t row = fStaleFrom; row < fItems.size(); row++)
        fItems[row]->fRow = int(row);
    fStaleFrom = fItems.size();
}

bool ColumnListModel::NumberSome(size_t count)
{
    const size_t end = std::min(fItems.size(), fStaleFrom + count);
    for (size_t row = fStaleFrom; row < end; row++)
        fItems[row]->fRow = int(row);
    fStaleFrom = std::max(fStaleFrom, end);
    return fStaleFrom < fItems.size();
}

void ColumnListModel::NumberRange(int first, int last)
{
    // A row's number is checked against the list before it is used, so
    // rows numbered out of turn are safe.
    first = std::max(first, 0);
    last = std::min(last, CountItems() - 1);
    for (int row = first; row <= last; row++)
        fItems[size_t(row)]->fRow = row;
}

int ColumnListModel::IndexOf(const CLVListItem *item) const
{
    if (!item || item->Superitem())
        return -1;
    // A row whose number still matches needs no renumbering, stale or not.
    if (HoldsAt(item->fRow, item))
        return item->fRow;
    if (fStaleFrom < fItems.size()) {
        Renumber();
        if (HoldsAt(item->fRow, item))
            return item->fRow;
    }
    return -1;
}

int ColumnListModel::RowOf(const CLVListItem *item) const
{
    return item->Superitem() ? item->fRow : IndexOf(item);
}

bool ColumnListModel::Contains(const CLVListItem *item) const
{
    while (item && item->Superitem()) {
        const CLVListItem *superitem = item->Superitem();
        if (superitem->SubitemAt(item->fRow) != item)
            return false;
        item = superitem;
    }
    return item && IndexOf(item) >= 0;
}

CLVListItem *ColumnListModel::ItemFor(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this)
        return nullptr;
    return static_cast<CLVListItem *>(index.internalPointer());
}

std::vector<CLVListItem *> ColumnListModel::FullList() const
{
    std::vector<CLVListItem *> rows;
    const auto add = [&rows](CLVListItem *row, const auto &self) -> void {
        rows.push_back(row);
        for (const auto &sub : row->Subitems())
            self(sub.get(), self);
    };
    for (const auto &row : fItems)
        add(row.get(), add);
    return rows;
}

std::vector<int> ColumnListModel::ValidRows(std::vector<int> indexes) const
{
    const int count = CountItems();
    std::erase_if(indexes, [count](int index) { return index < 0 || index >= count; });
    std::sort(indexes.begin(), indexes.end());
    indexes.erase(std::unique(indexes.begin(), indexes.end()), indexes.end());
    return indexes;
}

const CLVListItem *ColumnListModel::TopAncestor(const CLVListItem *item)
{
    while (item && item->Superitem())
        item = item->Superitem();
    return item;
}

bool ColumnListModel::IsUnder(const CLVListItem *item, const CLVListItem *ancestor)
{
    for (const CLVListItem *above = item ? item->Superitem() : nullptr; above;
         above = above->Superitem())
        if (above == ancestor)
            return true;
    return false;
}

QModelIndex ColumnListModel::IndexFor(const CLVListItem *item, int column) const
{
    if (column < 0 || column >= CountColumns() || !Contains(item))
        return QModelIndex();
    if (!fHierarchical && item->Superitem())
        return QModelIndex();
    return createIndex(RowOf(item), column, const_cast<CLVListItem *>(item));
}

void ColumnListModel::Adopt(CLVListItem *item, CLVListItem *superitem, int row)
{
    item->SetSuperitem(superitem);
    item->fRow = row;
    if (superitem)
        item->SetOutlineLevel(superitem->OutlineLevel() + 1);
    for (size_t sub = 0; sub < item->Subitems().size(); sub++)
        Adopt(item->Subitems()[sub].get(), item, int(sub));
}

void ColumnListModel::Release(CLVListItem *item)
{
    item->SetSuperitem(nullptr);
    item->fRow = -1;
    // Rows come back closed: a view they join later has not opened them.
    std::vector<CLVListItem *> open{item};
    while (!open.empty()) {
        CLVListItem *row = open.back();
        open.pop_back();
        row->fExpanded = false;
        for (const auto &sub : row->Subitems())
            if (sub->fExpanded || !sub->Subitems().empty())
                open.push_back(sub.get());
    }
}

void ColumnListModel::InsertRange(int index, Rows rows)
{
    std::vector<char> bytes;
    bytes.reserve(rows.size());
    for (const auto &row : rows)
        bytes.push_back(row->SearchByte());
    InsertRange(index, std::move(rows), std::move(bytes));
}

void ColumnListModel::InsertRange(int index, Rows rows, std::vector<char> bytes)
{
    if (rows.empty())
        return;
    const size_t at = size_t(std::clamp(index, 0, CountItems()));
    beginInsertRows(QModelIndex(), int(at), int(at + rows.size() - 1));
    fSearchBytes.insert(fSearchBytes.begin() + std::ptrdiff_t(at), bytes.begin(), bytes.end());
    fItems.insert(fItems.begin() + std::ptrdiff_t(at),
                  std::make_move_iterator(rows.begin()),
                  std::make_move_iterator(rows.end()));
    MarkStale(at);
    endInsertRows();
}

std::vector<ColumnListModel::Persistent> ColumnListModel::SavePersistent() const
{
    std::vector<Persistent> saved;
    for (const QModelIndex &index : persistentIndexList()) {
        const CLVListItem *top = ItemFor(index);
        if (!top->Superitem()) {
            saved.push_back(Persistent{index, index.row(), true});
            continue;
        }
        saved.push_back(Persistent{index, IndexOf(TopAncestor(top)), false});
    }
    return saved;
}

void ColumnListModel::InsertScattered(std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> rows)
{
    if (rows.empty())
        return;
    const int count = CountItems();
    for (auto &row : rows)
        row.first = std::clamp(row.first, 0, count);
    // Indexes are plain integers, a strict order: std::stable_sort is right here.
    std::stable_sort(rows.begin(), rows.end(), [](const auto &a, const auto &b) {
        return a.first < b.first;
    });

    std::vector<std::pair<int, Rows>> ranges;
    for (auto &row : rows) {
        if (ranges.empty() || ranges.back().first != row.first)
            ranges.emplace_back(row.first, Rows());
        ranges.back().second.push_back(std::move(row.second));
    }
    if (ranges.size() <= kFewRanges) {
        // From the last place back, so the earlier indexes still hold.
        for (auto range = ranges.rbegin(); range != ranges.rend(); ++range)
            InsertRange(range->first, std::move(range->second));
        return;
    }

    emit layoutAboutToBeChanged();
    const std::vector<Persistent> saved = SavePersistent();
    Rows merged;
    merged.reserve(fItems.size() + rows.size());
    std::vector<char> mergedBytes;
    mergedBytes.reserve(merged.capacity());
    size_t next = 0;
    for (size_t old = 0; old <= fItems.size(); old++) {
        for (; next < ranges.size() && size_t(ranges[next].first) == old; next++) {
            for (auto &row : ranges[next].second) {
                mergedBytes.push_back(row->SearchByte());
                merged.push_back(std::move(row));
            }
        }
        if (old < fItems.size()) {
            mergedBytes.push_back(fSearchBytes[old]);
            merged.push_back(std::move(fItems[old]));
        }
    }
    fItems.swap(merged);
    fSearchBytes.swap(mergedBytes);
    MarkStale(size_t(ranges.front().first));

    // A top-level row moves down by the rows inserted at or before its index;
    // sub-rows keep their rows under the same parent.
    QModelIndexList from;
    QModelIndexList to;
    for (const Persistent &entry : saved) {
        if (!entry.topLevel)
            continue;
        const auto before = std::upper_bound(rows.begin(),
                                             rows.end(),
                                             entry.topRow,
                                             [](int row, const auto &inserted) {
                                                 return row < inserted.first;
                                             });
        from.push_back(entry.index);
        to.push_back(createIndex(entry.topRow + int(before - rows.begin()),
                                 entry.index.column(),
                                 entry.index.internalPointer()));
    }
    changePersistentIndexList(from, to);
    emit layoutChanged();
}

ColumnListModel::Rows ColumnListModel::RemoveSorted(const std::vector<int> &indexes,
                                                    const std::vector<std::pair<int, int>> &runs)
{
    Rows removed;
    if (indexes.empty())
        return removed;

    if (runs.size() <= kFewRanges) {
        removed.resize(indexes.size());
        size_t end = indexes.size();
        for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
            const size_t first = size_t(run->first);
            const size_t length = size_t(run->second - run->first + 1);
            end -= length;
            beginRemoveRows(QModelIndex(), run->first, run->second);
            const auto begin = fItems.begin() + std::ptrdiff_t(first);
            std::move(begin, begin + std::ptrdiff_t(length), removed.begin() + std::ptrdiff_t(end));
            fItems.erase(begin, begin + std::ptrdiff_t(length));
            const auto bytes = fSearchBytes.begin() + std::ptrdiff_t(first);
            fSearchBytes.erase(bytes, bytes + std::ptrdiff_t(length));
            MarkStale(first);
            endRemoveRows();
        }
    } else {
        emit layoutAboutToBeChanged();
        const std::vector<Persistent> saved = SavePersistent();
        removed.reserve(indexes.size());
        size_t next = 0;
        size_t kept = 0;
        for (size_t row = 0; row < fItems.size(); row++) {
            if (next < indexes.size() && size_t(indexes[next]) == row) {
                removed.push_back(std::move(fItems[row]));
                next++;
            } else {
                if (kept != row) {
                    fItems[kept] = std::move(fItems[row]);
                    fSearchBytes[kept] = fSearchBytes[row];
                }
                kept++;
            }
        }
        fItems.resize(kept);
        fSearchBytes.resize(kept);
        MarkStale(size_t(indexes.front()));

        QModelIndexList from;
        QModelIndexList to;
        for (const Persistent &entry : saved) {
            const auto before = std::lower_bound(indexes.begin(), indexes.end(), entry.topRow);
            const bool gone = before != indexes.end() && *before == entry.topRow;
            if (!gone && !entry.topLevel)
                continue; // its top-level row stays, so its place under it does too
            from.push_back(entry.index);
            if (gone || entry.topRow < 0) {
                to.push_back(kGone);
                continue;
            }
            to.push_back(createIndex(entry.topRow - int(before - indexes.begin()),
                                     entry.index.column(),
                                     entry.index.internalPointer()));
        }
        changePersistentIndexList(from, to);
        emit layoutChanged();
    }
    for (const auto &row : removed)
        Release(row.get());
    return removed;
}

void ColumnListModel::Clear()
{
    Rows old;
    beginResetModel();
    old.swap(fItems);
    fSearchBytes.clear();
    fStaleFrom = 0;
    endResetModel();
    // `old` deletes the rows now that no view refers to them.
}

ColumnListModel::Rows ColumnListModel::TakeAll(std::vector<char> *searchBytes)
{
    Rows taken;
    beginResetModel();
    taken.swap(fItems);
    if (searchBytes != nullptr)
        searchBytes->swap(fSearchBytes);
    fSearchBytes.clear();
    fStaleFrom = 0;
    endResetModel();
    // A flat row's number is checked against the list before it is used
    // (HoldsAt): only rows with rows under them need letting go.
    if (fHierarchical) {
        for (const std::unique_ptr<CLVListItem> &row : taken)
            Release(row.get());
    }
    return taken;
}

void ColumnListModel::AddUnder(std::unique_ptr<CLVListItem> item, CLVListItem *superitem)
{
    const int row = superitem->CountSubitems();
    // Before the insertion, so the view sees a parent that can have children.
    superitem->fSuperItem = true;
    if (fHierarchical)
        beginInsertRows(IndexFor(superitem), row, row);
    Adopt(item.get(), superitem, row);
    superitem->OwnSubitems().push_back(std::move(item));
    if (fHierarchical)
        endInsertRows();
}

ColumnListModel::Rows ColumnListModel::RemoveSubitems(CLVListItem *superitem)
{
    Rows removed;
    const int count = superitem->CountSubitems();
    if (count == 0)
        return removed;
    if (fHierarchical)
        beginRemoveRows(IndexFor(superitem), 0, count - 1);
    removed.swap(superitem->OwnSubitems());
    if (fHierarchical)
        endRemoveRows();
    for (const auto &row : removed)
        Release(row.get());
    return removed;
}

void ColumnListModel::SortRows(Rows &rows, CompareFunc compare, int32_t key, bool descending)
{
    using Row = std::unique_ptr<CLVListItem>;
    if (descending) {
        StableMergeSort(rows, [compare, key](const Row &left, const Row &right) {
            return compare(left.get(), right.get(), key) >= 0;
        });
    } else {
        StableMergeSort(rows, [compare, key](const Row &left, const Row &right) {
            return compare(left.get(), right.get(), key) <= 0;
        });
    }
    if (!fHierarchical)
        return;
    for (const Row &row : rows) {
        if (row->Subitems().empty())
            continue;
        SortRows(row->OwnSubitems(), compare, key, descending);
        for (size_t sub = 0; sub < row->Subitems().size(); sub++)
            row->Subitems()[sub]->fRow = int(sub);
    }
}

void ColumnListModel::Sort(int32_t key, bool descending)
{
    const QList<QPersistentModelIndex> everyParent;
    emit layoutAboutToBeChanged(everyParent, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList from = persistentIndexList();
    if (fSortRows != nullptr && !fHierarchical)
        fSortRows(fItems, key, descending);
    else
        SortRows(fItems, fCompare, key, descending);
    // One walk over the moved rows: a million of them do not fit in a
    // cache, so a second walk would cost as much again.
    for (size_t row = 0; row < fItems.size(); row++) {
        fItems[row]->fRow = int(row);
        fSearchBytes[row] = fItems[row]->SearchByte();
    }
    fStaleFrom = fItems.size();
    QModelIndexList to;
    to.reserve(from.size());
    for (const QModelIndex &index : from) {
        CLVListItem *item = ItemFor(index);
        to.push_back(createIndex(item->fRow, index.column(), item));
    }
    changePersistentIndexList(from, to);
    emit layoutChanged(everyParent, QAbstractItemModel::VerticalSortHint);
}

QModelIndex ColumnListModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= CountColumns())
        return QModelIndex();
    if (!parent.isValid()) {
        if (row >= CountItems())
            return QModelIndex();
        return createIndex(row, column, fItems[size_t(row)].get());
    }
    if (!fHierarchical || parent.column() != 0)
        return QModelIndex();
    CLVListItem *sub = ItemFor(parent)->SubitemAt(row);
    return sub ? createIndex(row, column, sub) : QModelIndex();
}

QModelIndex ColumnListModel::parent(const QModelIndex &child) const
{
    const CLVListItem *item = ItemFor(child);
    if (!item || !item->Superitem())
        return QModelIndex();
    CLVListItem *superitem = item->Superitem();
    return createIndex(RowOf(superitem), 0, superitem);
}

int ColumnListModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return CountItems();
    if (!fHierarchical || parent.column() != 0)
        return 0;
    return ItemFor(parent)->CountSubitems();
}

int ColumnListModel::columnCount(const QModelIndex &) const
{
    return CountColumns();
}

QVariant ColumnListModel::data(const QModelIndex &index, int role) const
{
    const CLVListItem *item = ItemFor(index);
    if (!item || role != Qt::DisplayRole)
        return QVariant();
    return item->ColumnText(index.column());
}

void ColumnListModel::SetColumnLabel(int column, const QString &label)
{
    if (column < 0 || column >= CountColumns())
        return;
    fColumns[size_t(column)].label = label;
    emit headerDataChanged(Qt::Horizontal, column, column);
}

QVariant ColumnListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const Column *column = ColumnAt(section);
    if (!column || orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return column->label;
}

Qt::ItemFlags ColumnListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    // Telling the view that a row never has children spares it a persistent
    // index look-up per row when it lays out a million of them.
    if (!fHierarchical || index.column() != 0)
        return flags | Qt::ItemNeverHasChildren;
    const CLVListItem *item = ItemFor(index);
    if (item->IsSuperItem() || item->CountSubitems() > 0)
        return flags;
    return flags | Qt::ItemNeverHasChildren;
}

} // namespace kestrin
