#include "widgets/ColumnListView.h"

#include "widgets/CLVPaintedItem.h"
#include "widgets/ColumnListDelegate.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace kestrin {

namespace {

constexpr int kMinRowHeight = 20;

// A minimum is rounded up, so that the column never gets narrower than asked.
int Pixels(float width, bool roundUp = false)
{
    width = std::isfinite(width) ? std::max(width, 0.0f) : 0.0f;
    return int(roundUp ? std::ceil(width) : std::round(width));
}

// Rows about to leave the model cannot stay current or selected. Both are
// cleared first: Qt would otherwise move the selection of a single-selection
// view to a neighbour, and a list whose selected file went away must not
// suddenly have another one selected.
template<typename Leaving>
void ReleaseSelection(QItemSelectionModel *selection, const ColumnListModel &model, Leaving leaving)
{
    const QModelIndex current = selection->currentIndex();
    if (current.isValid() && leaving(model.ItemFor(current)))
        selection->setCurrentIndex(QModelIndex(), QItemSelectionModel::NoUpdate);
    const QItemSelection selected = selection->selection();
    if (!selected.isEmpty() && leaving(model.ItemFor(selected.first().topLeft())))
        selection->clearSelection();
}

} // namespace

ColumnListView::ColumnListView(QWidget *parent, bool hierarchical)
    : QTreeView(parent)
    , fModel(new ColumnListModel(hierarchical, this))
    , fDelegate(new ColumnListDelegate(this, fModel, hierarchical))
    , fHierarchical(hierarchical)
{
    setModel(fModel);
    setItemDelegate(fDelegate);
    setUniformRowHeights(true);
    // The tree draws its own expanders in the CLV_EXPANDER column; Qt's
    // branch lines, indentation and its own ways of opening rows are off so
    // that every opening goes through Expand and ExpandRequested.
    setRootIsDecorated(false);
    setIndentation(0);
    setItemsExpandable(false);
    setExpandsOnDoubleClick(false);
    setAllColumnsShowFocus(true);
    setSelectionMode(SingleSelection);
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);

    QHeaderView *labels = header();
    // Columns keep their widths: a wider set scrolls sideways.
    labels->setStretchLastSection(false);
    labels->setSectionsMovable(true);
    labels->setFirstSectionMovable(true);
    labels->setSectionsClickable(true);
    labels->setHighlightSections(false);
    // Each column has its own minimum, enforced in SectionResized.
    labels->setMinimumSectionSize(0);
    labels->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    // Fitting a column to its contents on a divider's double click would use
    // size hints that rows drawing themselves do not give.
    disconnect(labels,
               SIGNAL(sectionHandleDoubleClicked(int)),
               this,
               SLOT(resizeColumnToContents(int)));
    connect(labels, &QHeaderView::sectionClicked, this, &ColumnListView::HeaderClicked);
    // After the header's own handling: it has made the sections by then.
    connect(fModel,
            &QAbstractItemModel::columnsInserted,
            this,
            [this](const QModelIndex &, int first, int last) { ColumnsAdded(first, last); });
    connect(fModel, &ColumnListModel::SortOrderChanged, this, &ColumnListView::UpdateSortIndicator);
    connect(fModel, &ColumnListModel::RowsAboutToMove, this, &ColumnListView::RowsAboutToMove);
    connect(fModel, &ColumnListModel::RowsMoved, this, &ColumnListView::RowsMoved);
    connect(fModel, &ColumnListModel::RowsRepaint, this, &ColumnListView::RowsRepaint);
    // Emptied by whoever keeps the rows: no row stays selected or current.
    connect(fModel, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        selectionModel()->clear();
    });
    connect(labels, &QHeaderView::sectionResized, this, &ColumnListView::SectionResized);
    connect(labels, &QHeaderView::sectionMoved, this, &ColumnListView::SectionMoved);

    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        // Qt also reports rows inserted or removed around the selected row;
        // only another selected row is a change for the list's owner.
        CLVListItem *selected = SelectedItem();
        if (selected == fSelected)
            return;
        fSelected = selected;
        SelectionChanged();
        emit selectionChangedSignal();
    });
    // QTreeView's public expandAll() and friends bypass Expand; the rows'
    // own state follows whatever opened or closed them.
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex &index) {
        if (CLVListItem *item = fModel->ItemFor(index))
            fModel->SetExpanded(item, true);
    });
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex &index) {
        if (CLVListItem *item = fModel->ItemFor(index))
            fModel->SetExpanded(item, false);
    });
}

ColumnListView::~ColumnListView() = default;

// Columns

int ColumnListView::AddColumn(const QString &label, float width, float minWidth, uint32_t flags)
{
    const int column = fModel->AddColumn(label, minWidth, flags);
    SetColumnWidth(column, width);
    return column;
}

void ColumnListView::ColumnsAdded(int first, int last)
{
    for (int column = first; column <= last; column++) {
        const ColumnListModel::Column *info = fModel->ColumnAt(column);
        header()->setSectionResizeMode(column,
                                       info->flags & CLV_NOT_RESIZABLE ? QHeaderView::Fixed
                                                                       : QHeaderView::Interactive);
        SetColumnWidth(column, info->minWidth);
    }
    fDisplayOrder = DisplayOrder();
    UpdateSortIndicator();
}

int ColumnListView::CountColumns() const
{
    return fModel->CountColumns();
}

QString ColumnListView::ColumnLabel(int column) const
{
    const ColumnListModel::Column *info = fModel->ColumnAt(column);
    return info ? info->label : QString();
}

void ColumnListView::SetColumnLabel(int column, const QString &label)
{
    fModel->SetColumnLabel(column, label);
}

uint32_t ColumnListView::ColumnFlags(int column) const
{
    const ColumnListModel::Column *info = fModel->ColumnAt(column);
    return info ? info->flags : 0;
}

float ColumnListView::ColumnMinWidth(int column) const
{
    const ColumnListModel::Column *info = fModel->ColumnAt(column);
    return info ? info->minWidth : -1;
}

float ColumnListView::ColumnWidth(int column) const
{
    return fModel->ColumnAt(column) ? float(header()->sectionSize(column)) : -1;
}

void ColumnListView::SetColumnWidth(int column, float width)
{
    const ColumnListModel::Column *info = fModel->ColumnAt(column);
    if (!info)
        return;
    fSettingWidth = true;
    header()->resizeSection(column, std::max(Pixels(width), Pixels(info->minWidth, true)));
    fSettingWidth = false;
}

std::vector<int> ColumnListView::DisplayOrder() const
{
    std::vector<int> order;
    const QHeaderView *labels = header();
    for (int visual = 0; visual < labels->count(); visual++)
        order.push_back(labels->logicalIndex(visual));
    return order;
}

void ColumnListView::SetDisplayOrder(const std::vector<int> &order)
{
    const int count = CountColumns();
    std::vector<int> columns(static_cast<size_t>(count));
    std::iota(columns.begin(), columns.end(), 0);
    if (!std::is_permutation(order.begin(), order.end(), columns.begin(), columns.end()))
        return;
    QHeaderView *labels = header();
    fMovingColumns = true;
    for (int visual = 0; visual < count; visual++) {
        const int from = labels->visualIndex(order[size_t(visual)]);
        if (from != visual)
            labels->moveSection(from, visual);
    }
    fMovingColumns = false;
    fDisplayOrder = DisplayOrder();
}

void ColumnListView::SetColumnLabelsVisible(bool visible)
{
    setHeaderHidden(!visible);
}

void ColumnListView::SectionResized(int column, int oldWidth, int newWidth)
{
    const ColumnListModel::Column *info = fModel->ColumnAt(column);
    if (fClampingWidth || !info)
        return;
    // QHeaderView knows only one minimum for all sections.
    const int minimum = Pixels(info->minWidth, true);
    if (newWidth < minimum) {
        fClampingWidth = true;
        header()->resizeSection(column, minimum);
        fClampingWidth = false;
        newWidth = minimum;
        if (newWidth == oldWidth)
            return;
    }
    if (!fSettingWidth)
        ColumnWidthChanged(column, float(newWidth));
}

void ColumnListView::SectionMoved(int, int oldVisual, int newVisual)
{
    if (fMovingColumns)
        return;
    const std::vector<int> order = DisplayOrder();
    if (fModel->OrderAllowed(fDisplayOrder, order)) {
        fDisplayOrder = order;
        return;
    }
    // The header has no per-section movability: a forbidden drop goes back.
    fMovingColumns = true;
    header()->moveSection(newVisual, oldVisual);
    fMovingColumns = false;
}

// Sorting

void ColumnListView::SetSortFunction(CompareFunc compare, SortRowsFunc sortRows)
{
    fModel->SetSortFunction(compare, sortRows);
}

ColumnListView::CompareFunc ColumnListView::SortFunction() const
{
    return fModel->SortFunction();
}

void ColumnListView::SetSortKey(int column)
{
    fModel->SetSortKey(column);
}

int ColumnListView::SortKey() const
{
    return fModel->SortKey();
}

void ColumnListView::SetSortMode(CLVSortMode mode)
{
    fModel->SetSortMode(mode);
}

CLVSortMode ColumnListView::SortMode() const
{
    return fModel->SortMode();
}

void ColumnListView::UpdateSortIndicator()
{
    QHeaderView *labels = header();
    const int key = SortKey();
    const CLVSortMode mode = SortMode();
    const bool shown = mode != NoSort && fModel->ColumnAt(key);
    labels->setSortIndicatorShown(shown);
    if (shown)
        labels->setSortIndicator(key, mode == Descending ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void ColumnListView::SortItems()
{
    fModel->SortItems();
}

void ColumnListView::HeaderClicked(int column)
{
    // QHeaderView flips its indicator on any click before telling us; it
    // shows our key and mode again whatever the click does.
    if (!(ColumnFlags(column) & CLV_SORT_KEYABLE)) {
        UpdateSortIndicator();
        return;
    }
    const bool toggle = column == SortKey() && SortMode() != NoSort;
    fModel->SetSortMode(toggle && SortMode() == Ascending ? Descending : Ascending);
    fModel->SetSortKey(column);
    SortItems();
    SortChanged();
}

// Rows

int ColumnListView::CountItems() const
{
    return fModel->CountItems();
}

CLVListItem *ColumnListView::ItemAt(int index) const
{
    return fModel->ItemAt(index);
}

const std::vector<char> &ColumnListView::SearchBytes() const
{
    return fModel->SearchBytes();
}

int ColumnListView::IndexOf(const CLVListItem *item) const
{
    return fModel->IndexOf(item);
}

int ColumnListView::IndexOf(const QPoint &viewportPoint) const
{
    const QHeaderView *labels = header();
    if (labels->count() == 0)
        return -1;
    // The whole width of a row belongs to it, also right of the last column.
    const int left = -horizontalOffset();
    const int x = std::clamp(viewportPoint.x(), left, std::max(left, left + labels->length() - 1));
    const QModelIndex index = indexAt(QPoint(x, viewportPoint.y()));
    return index.isValid() && !index.parent().isValid() ? index.row() : -1;
}

int ColumnListView::ScrollUnit() const
{
    return verticalScrollMode() == ScrollPerPixel ? fRowHeight : 1;
}

int ColumnListView::RowWidth() const
{
    return std::max(header()->length(), viewport()->width() + horizontalOffset());
}

QRect ColumnListView::RowRect(const QModelIndex &index) const
{
    const QRect cell = visualRect(index);
    if (cell.height() <= 0)
        return QRect();
    return QRect(-horizontalOffset(), cell.top(), RowWidth(), cell.height());
}

QRect ColumnListView::ItemFrame(int index) const
{
    if (index < 0 || index >= CountItems())
        return QRect();
    if (fHierarchical)
        return RowRect(fModel->index(index, 0));
    // Uniform rows: no need to search Qt's layout of a million rows.
    return QRect(-horizontalOffset(), index * fRowHeight - verticalOffset(), RowWidth(), fRowHeight);
}

ColumnListView::TopAnchor ColumnListView::AnchorTop(int firstChanged) const
{
    TopAnchor anchor;
    const int value = verticalScrollBar()->value();
    const int unit = ScrollUnit();
    // A top-level row takes at least one line, so the top line's top-level
    // row is at most this; a change after it moves nothing on screen. A view
    // at the very top stays there, so rows added before the first one show.
    const int topLine = value / unit;
    if (value <= 0 || firstChanged > topLine)
        return anchor;
    if (!fHierarchical) {
        anchor.row = topLine;
        anchor.offset = value % unit;
        return anchor;
    }
    const QModelIndex top = indexAt(QPoint(-horizontalOffset(), 0));
    CLVListItem *item = fModel->ItemFor(top);
    if (!item)
        return anchor;
    anchor.item = item;
    anchor.row = fModel->IndexOf(ColumnListModel::TopAncestor(item));
    anchor.offset = -visualRect(top).top();
    return anchor;
}

void ColumnListView::RestoreTop(const TopAnchor &anchor, int shift)
{
    if (anchor.row < 0 || shift == 0)
        return;
    QScrollBar *bar = verticalScrollBar();
    if (!fHierarchical) {
        const int value = std::max(0, (anchor.row + shift) * ScrollUnit() + anchor.offset);
        // The range catches up when the view next lays its rows out; until
        // then it must not clamp the new position.
        if (value > bar->maximum())
            bar->setMaximum(value);
        bar->setValue(value);
        return;
    }
    // If the top row went, the first row that stayed after it takes its place.
    const QModelIndex kept = fModel->IndexFor(anchor.item);
    const QModelIndex top = kept.isValid()
                                ? kept
                                : fModel->index(std::min(anchor.row + shift, CountItems() - 1), 0);
    if (!top.isValid())
        return;
    const int across = horizontalScrollBar()->value();
    scrollTo(top, PositionAtTop);
    bar->setValue(bar->value() + (kept.isValid() ? anchor.offset : 0));
    horizontalScrollBar()->setValue(across);
}

void ColumnListView::AddItem(std::unique_ptr<CLVListItem> item)
{
    AddItem(std::move(item), CountItems());
}

void ColumnListView::AddItem(std::unique_ptr<CLVListItem> item, int index)
{
    fModel->AddItem(std::move(item), index);
}

void ColumnListView::AddList(std::vector<std::unique_ptr<CLVListItem>> items)
{
    fModel->AddList(std::move(items));
}

void ColumnListView::InsertItems(std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> items)
{
    fModel->InsertItems(std::move(items));
}

std::unique_ptr<CLVListItem> ColumnListView::RemoveItem(int index)
{
    std::vector<std::unique_ptr<CLVListItem>> removed = RemoveItems({index});
    return removed.empty() ? nullptr : std::move(removed.front());
}

std::vector<std::unique_ptr<CLVListItem>> ColumnListView::RemoveItems(std::vector<int> indexes)
{
    return fModel->RemoveItems(std::move(indexes));
}

void ColumnListView::MakeEmpty()
{
    fModel->Clear();
}

void ColumnListView::RowsAboutToMove(int firstChanged, const std::vector<int> &leaving)
{
    if (!leaving.empty()) {
        ReleaseSelection(selectionModel(), *fModel, [&](const CLVListItem *item) {
            const int row = fModel->IndexOf(ColumnListModel::TopAncestor(item));
            return std::binary_search(leaving.begin(), leaving.end(), row);
        });
    }
    fMovingTop = AnchorTop(firstChanged);
}

void ColumnListView::RowsMoved(const RowShift &shift)
{
    const TopAnchor anchor = std::exchange(fMovingTop, TopAnchor());
    if (anchor.row >= 0)
        RestoreTop(anchor, shift.Moved(anchor.row) - anchor.row);
}

void ColumnListView::RowsRepaint(int index)
{
    if (index < 0)
        viewport()->update();
    else
        viewport()->update(ItemFrame(index));
}

void ColumnListView::InvalidateItem(int index)
{
    viewport()->update(ItemFrame(index));
}

void ColumnListView::InvalidateItem(const CLVListItem *item)
{
    const int index = TopLevelIndexOf(item);
    viewport()->update(index >= 0 ? ItemFrame(index) : RowRect(fModel->IndexFor(item)));
}

void ColumnListView::InvalidateAll()
{
    viewport()->update();
}

// The tree

void ColumnListView::AddUnder(std::unique_ptr<CLVListItem> item, CLVListItem *superitem)
{
    if (!superitem)
        return AddItem(std::move(item));
    if (item && fModel->Contains(superitem))
        fModel->AddUnder(std::move(item), superitem);
}

std::vector<std::unique_ptr<CLVListItem>> ColumnListView::RemoveSubitems(CLVListItem *superitem)
{
    if (!superitem || !fModel->Contains(superitem))
        return {};
    ReleaseSelection(selectionModel(), *fModel, [superitem](const CLVListItem *item) {
        return ColumnListModel::IsUnder(item, superitem);
    });
    return fModel->RemoveSubitems(superitem);
}

void ColumnListView::Expand(CLVListItem *item)
{
    if (!fHierarchical || !item || !item->IsSuperItem() || item->IsExpanded()
        || !fModel->Contains(item))
        return;
    // Before it opens, so that a subclass can fill it.
    ExpandRequested(item);
    const QModelIndex index = fModel->IndexFor(item);
    if (!index.isValid() || item->IsExpanded())
        return;
    fModel->SetExpanded(item, true);
    expand(index);
    InvalidateItem(item);
}

void ColumnListView::Collapse(CLVListItem *item)
{
    if (!fHierarchical || !item || !item->IsExpanded())
        return;
    const QModelIndex index = fModel->IndexFor(item);
    if (!index.isValid())
        return;
    // A row the collapse hides cannot stay selected or current: both go to
    // the row that closes.
    QItemSelectionModel *selection = selectionModel();
    if (ColumnListModel::IsUnder(SelectedItem(), item))
        Select(item);
    else if (ColumnListModel::IsUnder(fModel->ItemFor(selection->currentIndex()), item))
        selection->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    fModel->SetExpanded(item, false);
    collapse(index);
    InvalidateItem(item);
}

std::vector<CLVListItem *> ColumnListView::FullList() const
{
    return fModel->FullList();
}

// Selection

int ColumnListView::CurrentSelection() const
{
    return TopLevelIndexOf(SelectedItem());
}

CLVListItem *ColumnListView::SelectedItem() const
{
    const QItemSelection selection = selectionModel()->selection();
    if (selection.isEmpty())
        return nullptr;
    return fModel->ItemFor(selection.first().topLeft());
}

void ColumnListView::Select(int index)
{
    Select(ItemAt(index));
}

void ColumnListView::Select(CLVListItem *item)
{
    const QModelIndex index = fModel->IndexFor(item);
    if (!index.isValid())
        return;
    selectionModel()->setCurrentIndex(index,
                                      QItemSelectionModel::ClearAndSelect
                                          | QItemSelectionModel::Rows);
}

void ColumnListView::DeselectAll()
{
    selectionModel()->clear();
}

void ColumnListView::ShowRow(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    // QTreeView would also scroll sideways to the first column.
    const int across = horizontalScrollBar()->value();
    scrollTo(index, EnsureVisible);
    horizontalScrollBar()->setValue(across);
}

void ColumnListView::ScrollTo(int index)
{
    ShowRow(fModel->index(index, 0));
}

void ColumnListView::ScrollTo(CLVListItem *item)
{
    ShowRow(fModel->IndexFor(item));
}

void ColumnListView::ScrollToSelection()
{
    ScrollTo(SelectedItem());
}

void ColumnListView::SetRowHeight(int height)
{
    fRowHeight = std::max(kMinRowHeight, height);
    scheduleDelayedItemsLayout();
}

// Hooks and input

// The hooks do nothing unless a subclass wants them to.
void ColumnListView::SelectionChanged() {}
void ColumnListView::Invoked(int) {}
void ColumnListView::SortChanged() {}
void ColumnListView::ColumnWidthChanged(int, float) {}
void ColumnListView::ExpandRequested(CLVListItem *) {}

int ColumnListView::TopLevelIndexOf(const CLVListItem *item) const
{
    return item && !item->Superitem() ? fModel->IndexOf(item) : -1;
}

void ColumnListView::Invoke(CLVListItem *item)
{
    const int index = TopLevelIndexOf(item);
    Invoked(index);
    emit invoked(index);
}

// Subclasses do their own type-ahead; Qt's would move the selection first.
void ColumnListView::keyboardSearch(const QString &) {}

int ColumnListView::IndentedColumn() const
{
    const int expander = fModel->ExpanderColumn();
    if (expander < 0)
        return -1;
    const QHeaderView *labels = header();
    for (int visual = labels->visualIndex(expander) + 1; visual < labels->count(); visual++) {
        const int column = labels->logicalIndex(visual);
        if (!labels->isSectionHidden(column))
            return column;
    }
    return -1;
}

CLVListItem *ColumnListView::ExpanderAt(const QPoint &viewportPoint) const
{
    const int expander = fModel->ExpanderColumn();
    if (!fHierarchical || expander < 0 || header()->logicalIndexAt(viewportPoint.x()) != expander)
        return nullptr;
    CLVListItem *item = fModel->ItemFor(indexAt(viewportPoint));
    return item && item->IsSuperItem() ? item : nullptr;
}

bool ColumnListView::StepIntoTree(bool open)
{
    CLVListItem *item = SelectedItem();
    if (!item)
        return false;
    if (open && item->IsSuperItem() && !item->IsExpanded())
        Expand(item);
    else if (open && item->IsExpanded() && item->CountSubitems() > 0)
        Select(item->SubitemAt(0));
    else if (!open && item->IsExpanded())
        Collapse(item);
    else if (!open && item->Superitem())
        Select(item->Superitem());
    else
        return false;
    return true;
}

void ColumnListView::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // Without a selection, a dialog's default button may want the key.
        event->setAccepted(SelectedItem() != nullptr);
        if (CLVListItem *item = SelectedItem())
            Invoke(item);
        return;
    case Qt::Key_Right:
    case Qt::Key_Left:
        if (fHierarchical && StepIntoTree(event->key() == Qt::Key_Right)) {
            event->accept();
            return;
        }
        break;
    default:
        break;
    }
    QTreeView::keyPressEvent(event);
}

void ColumnListView::mousePressEvent(QMouseEvent *event)
{
    CLVListItem *item = event->button() == Qt::LeftButton ? ExpanderAt(event->position().toPoint())
                                                          : nullptr;
    if (!item)
        return QTreeView::mousePressEvent(event);
    // An expander opens or closes its row without selecting it.
    if (item->IsExpanded())
        Collapse(item);
    else
        Expand(item);
    event->accept();
}

void ColumnListView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QTreeView::mouseDoubleClickEvent(event);
    event->accept();
    const QPoint point = event->position().toPoint();
    // The second click of a quick pair on an expander is a click too.
    if (ExpanderAt(point))
        return mousePressEvent(event);
    CLVListItem *item = fModel->ItemFor(indexAt(point));
    if (!item)
        return;
    if (SelectedItem() != item)
        Select(item);
    Invoke(item);
}

void ColumnListView::DrawCell(
    QPainter &painter, const QRect &rect, CLVListItem &item, int, int column, bool selected) const
{
    if (auto *painted = dynamic_cast<CLVPaintedItem *>(&item))
        painted->DrawItemColumn(painter, rect, column, selected, true);
}

void ColumnListView::drawRow(QPainter *painter,
                             const QStyleOptionViewItem &options,
                             const QModelIndex &index) const
{
    QStyleOptionViewItem option(options);
    option.state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(index));
    const QModelIndex parent = index.parent();
    const QHeaderView *labels = header();
    const int width = viewport()->width();
    for (int visual = 0; visual < labels->count(); visual++) {
        const int column = labels->logicalIndex(visual);
        const int left = labels->sectionViewportPosition(column);
        const int size = labels->sectionSize(column);
        if (labels->isSectionHidden(column) || size <= 0 || left >= width || left + size <= 0)
            continue;
        option.rect = QRect(left, options.rect.top(), size, options.rect.height());
        fDelegate->paint(painter, option, fModel->index(index.row(), column, parent));
    }
}

} // namespace kestrin
