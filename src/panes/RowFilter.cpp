#include "panes/RowFilter.h"

#include "panes/DirListItem.h"
#include "panes/MarkedList.h"
#include "panes/PaneHost.h"
#include "panes/RowPlacement.h"
#include "query/QueryMatcher.h"

#include <QTimer>
#include <algorithm>
#include <tuple>

namespace kestrin {

namespace {

// Rows looked at per turn of the event loop: a few milliseconds' work.
constexpr size_t kRowsPerStep = 32768;
// Rows numbered at once around those a view shows first.
constexpr int kRowsNumberedFirst = 256;
// A row's verdict in a pass.
constexpr uint8_t kPasses = 1;
constexpr uint8_t kMarked = 2;

// Letters of either case are the same letter; other bytes (UTF-8 sequences
// among them) stay as they are.
void LowerInto(const std::string &text, std::string &into)
{
    into.resize(text.size());
    std::transform(text.begin(), text.end(), into.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
    });
}

} // namespace

RowFilter::RowFilter(ColumnListModel &list, PaneHost &host, MarkedList &marked)
    : fList(list)
    , fHost(host)
    , fMarked(marked)
    , fTimer(new QTimer(this))
    , fNumberTimer(new QTimer(this))
{
    fTimer->setSingleShot(true);
    fTimer->setInterval(0);
    connect(fTimer, &QTimer::timeout, this, [this] { Step(); });
    fNumberTimer->setSingleShot(true);
    fNumberTimer->setInterval(0);
    connect(fNumberTimer, &QTimer::timeout, this, [this] { NumberStep(); });
    connect(&fList, &ColumnListModel::RowsMoved, this, [this](const RowShift &shift) {
        RowsMoved(shift);
    });
    connect(&fList,
            &QAbstractItemModel::layoutChanged,
            this,
            [this](const QList<QPersistentModelIndex> &, QAbstractItemModel::LayoutChangeHint hint) {
                if (hint == QAbstractItemModel::VerticalSortHint)
                    Resorted();
            });
}

RowFilter::~RowFilter() = default;

void RowFilter::SetText(const std::string &text)
{
    if (text == fText)
        return;
    fText = text;
    LowerInto(text, fNeedle);
    fPattern = fNeedle.find_first_of("*?") != std::string::npos;
    Restart();
}

void RowFilter::SetShowDotFiles(bool show)
{
    if (show == fShowDotFiles)
        return;
    fShowDotFiles = show;
    Restart();
}

bool RowFilter::Passes(const DirListItem &row) const
{
    if (row.IsParent())
        return true;
    const std::string &name = row.Name();
    if (!fShowDotFiles && !name.empty() && name.front() == '.')
        return false;
    if (fNeedle.empty())
        return true;
    LowerInto(name, fLowered);
    if (fPattern)
        return QueryMatcher::MatchesPattern(fLowered, fNeedle);
    return fLowered.find(fNeedle) != std::string::npos;
}

std::string RowFilter::Summary() const
{
    if (fText.empty())
        return {};
    int shown = fList.CountItems();
    if (shown > 0 && static_cast<const DirListItem *>(fList.ItemAt(0))->IsParent())
        shown--;
    return std::to_string(shown) + " of " + std::to_string(shown + CountHidden()) + " shown";
}

void RowFilter::Restart()
{
    fSelectAfter = -1;
    fPending = true;
    fDone = 0;
    fTimer->start();
}

void RowFilter::Finish()
{
    while (fPending)
        Step();
    SelectAfter();
}

void RowFilter::Step()
{
    if (!fPending)
        return;
    const size_t listed = size_t(fList.CountItems());
    const size_t total = listed + fHidden.size();
    if (fDone == 0) {
        fVerdicts.assign(total, 0);
        fHiddenBytes.assign(fHidden.size(), 0);
        fNextHiddenFiles = {};
    }
    const size_t end = std::min(total, fDone + kRowsPerStep);
    for (; fDone < end; fDone++) {
        const auto &row = static_cast<const DirListItem &>(
            fDone < listed ? *fList.ItemAt(int(fDone)) : *fHidden[fDone - listed].row);
        const bool passes = Passes(row);
        fVerdicts[fDone] = uint8_t((passes ? kPasses : 0) | (row.IsMarked() ? kMarked : 0));
        if (fDone >= listed)
            fHiddenBytes[fDone - listed] = row.SearchByte();
        if (!passes)
            fNextHiddenFiles.Add(row);
    }
    if (fDone < total)
        fTimer->start();
    else
        Apply();
}

void RowFilter::Apply()
{
    fPending = false;
    fTimer->stop();
    const CLVListItem *selected = fList.ItemAt(fHost.Selection());
    fApplying = true;
    std::vector<char> listedBytes;
    ColumnListModel::Rows listed = fList.TakeAll(&listedBytes);
    std::vector<Hidden> hidden = std::exchange(fHidden, {});
    // The rows in the place's order again, each with its verdict, then
    // split into the shown and the hidden. Only pointers move: a million
    // rows are not read here.
    ColumnListModel::Rows shown;
    std::vector<char> bytes;
    shown.reserve(listed.size() + hidden.size());
    bytes.reserve(listed.size() + hidden.size());
    fHidden.reserve(listed.size() + hidden.size());
    bool marks = false;
    int select = -1;
    const auto place = [&](std::unique_ptr<CLVListItem> row, size_t at, char byte) {
        marks = marks || (fVerdicts[at] & kMarked) != 0;
        if ((fVerdicts[at] & kPasses) == 0) {
            fHidden.push_back(Hidden{int(shown.size()), std::move(row)});
            return;
        }
        if (row.get() == selected)
            select = int(shown.size());
        shown.push_back(std::move(row));
        bytes.push_back(byte);
    };
    const size_t count = listed.size();
    size_t next = 0;
    const auto placeHidden = [&] {
        place(std::move(hidden[next].row), count + next, fHiddenBytes[next]);
        next++;
    };
    for (size_t i = 0; i < count; i++) {
        while (next < hidden.size() && size_t(hidden[next].before) <= i)
            placeHidden();
        place(std::move(listed[i]), i, listedBytes[i]);
    }
    // Those after the last shown row.
    while (next < hidden.size())
        placeHidden();
    fHiddenFiles = fNextHiddenFiles;
    fVerdicts = {};
    fHiddenBytes = {};
    fList.AddList(std::move(shown), std::move(bytes));
    fApplying = false;
    if (marks)
        fMarked.Rebuild();
    if (select < 0 && fList.CountItems() > 0) {
        const auto *first = static_cast<const DirListItem *>(fList.ItemAt(0));
        select = first->IsParent() && fList.CountItems() > 1 ? 1 : 0;
    }
    // Numbering a million rows at once would hold up the key: the rows
    // about to be shown are numbered now, the others a slice per turn.
    fList.NumberRange(0, kRowsNumberedFirst);
    fList.NumberRange(select - kRowsNumberedFirst, select + kRowsNumberedFirst);
    // The view lays out the rows it shows before it scrolls to one: on a
    // million rows, that is a turn of the event loop of its own.
    fSelectAfter = select;
    fNumberTimer->start();
    emit Filtered();
}

void RowFilter::SelectAfter()
{
    if (const int select = std::exchange(fSelectAfter, -1);
        select >= 0 && select < fList.CountItems())
        fHost.SelectRow(select, true);
}

void RowFilter::NumberStep()
{
    if (fSelectAfter >= 0) {
        SelectAfter();
        fNumberTimer->start();
        return;
    }
    if (fList.NumberSome(kRowsPerStep))
        fNumberTimer->start();
}

void RowFilter::AddListing(ColumnListModel::Rows rows)
{
    Forget();
    if (!IsActive()) {
        fList.AddList(std::move(rows));
        return;
    }
    ColumnListModel::Rows shown;
    shown.reserve(rows.size());
    for (std::unique_ptr<CLVListItem> &row : rows) {
        if (row == nullptr)
            continue;
        if (Passes(static_cast<const DirListItem &>(*row))) {
            shown.push_back(std::move(row));
        } else {
            fHiddenFiles.Add(*row);
            fHidden.push_back(Hidden{int(shown.size()), std::move(row)});
        }
    }
    // The places just given are already those in the list to be.
    fApplying = true;
    fList.AddList(std::move(shown));
    fApplying = false;
}

void RowFilter::Forget()
{
    fHidden.clear();
    fHiddenFiles = {};
    fPending = false;
    fTimer->stop();
    fSelectAfter = -1;
}

void RowFilter::ClearText()
{
    fText.clear();
    fNeedle.clear();
    fPattern = false;
}

ColumnListModel::Rows RowFilter::Take(const std::unordered_set<const CLVListItem *> &rows)
{
    ColumnListModel::Rows taken;
    size_t kept = 0;
    for (size_t i = 0; i < fHidden.size(); i++) {
        if (rows.count(fHidden[i].row.get()) != 0) {
            fHiddenFiles.Remove(*fHidden[i].row);
            taken.push_back(std::move(fHidden[i].row));
        } else if (kept++ != i) {
            fHidden[kept - 1] = std::move(fHidden[i]);
        }
    }
    fHidden.resize(kept);
    if (fPending && !taken.empty())
        Restart();
    return taken;
}

bool RowFilter::Precedes(const DirListItem &a, const DirListItem &b) const
{
    if (a.IsFolder() != b.IsFolder())
        return a.IsFolder();
    if (fList.SortMode() == NoSort)
        return false;
    const int order = CompareFunc(&a, &b, fList.SortKey());
    return fList.SortMode() == Descending ? order > 0 : order < 0;
}

void RowFilter::Keep(ColumnListModel::Rows rows)
{
    if (rows.empty())
        return;
    // Each row's place among the shown rows, then among the hidden rows of
    // that place in the sort's order: the index of the hidden row it goes
    // before.
    const int firstFile = RowPlacement::FirstFile(fList);
    std::vector<std::pair<size_t, Hidden>> arriving;
    arriving.reserve(rows.size());
    for (std::unique_ptr<CLVListItem> &row : rows) {
        const auto &entry = static_cast<const DirListItem &>(*row);
        const int before = RowPlacement::InsertionPoint(fList,
                                                        entry,
                                                        firstFile,
                                                        fList.SortKey(),
                                                        fList.SortMode());
        const auto low = std::partition_point(fHidden.begin(),
                                              fHidden.end(),
                                              [before](const Hidden &h) {
                                                  return h.before < before;
                                              });
        const auto at = std::partition_point(low, fHidden.end(), [&](const Hidden &h) {
            return h.before == before && !Precedes(entry, static_cast<const DirListItem &>(*h.row));
        });
        fHiddenFiles.Add(*row);
        arriving.emplace_back(size_t(at - fHidden.begin()), Hidden{before, std::move(row)});
    }
    std::stable_sort(arriving.begin(), arriving.end(), [this](const auto &a, const auto &b) {
        if (a.first != b.first || a.second.before != b.second.before)
            return std::tie(a.first, a.second.before) < std::tie(b.first, b.second.before);
        return Precedes(static_cast<const DirListItem &>(*a.second.row),
                        static_cast<const DirListItem &>(*b.second.row));
    });
    std::vector<Hidden> merged;
    merged.reserve(fHidden.size() + arriving.size());
    size_t next = 0;
    for (size_t i = 0; i <= fHidden.size(); i++) {
        for (; next < arriving.size() && arriving[next].first == i; next++)
            merged.push_back(std::move(arriving[next].second));
        if (i < fHidden.size())
            merged.push_back(std::move(fHidden[i]));
    }
    fHidden.swap(merged);
    if (fPending)
        Restart();
}

void RowFilter::RowsMoved(const RowShift &shift)
{
    if (fApplying)
        return;
    if (fSelectAfter >= 0)
        fSelectAfter = shift.Moved(fSelectAfter);
    for (Hidden &hidden : fHidden)
        hidden.before = shift.Moved(hidden.before);
    if (fPending)
        Restart();
}

void RowFilter::Resorted()
{
    if (fHidden.empty())
        return;
    ColumnListModel::Rows rows;
    rows.reserve(fHidden.size());
    for (Hidden &hidden : fHidden)
        rows.push_back(std::move(hidden.row));
    fHidden.clear();
    FolderLister::SortRows(rows, fList.SortKey(), fList.SortMode());
    const int firstFile = RowPlacement::FirstFile(fList);
    for (std::unique_ptr<CLVListItem> &row : rows) {
        const int before = RowPlacement::InsertionPoint(fList,
                                                        static_cast<const DirListItem &>(*row),
                                                        firstFile,
                                                        fList.SortKey(),
                                                        fList.SortMode());
        fHidden.push_back(Hidden{before, std::move(row)});
    }
    if (fPending)
        Restart();
}

} // namespace kestrin
