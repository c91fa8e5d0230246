#pragma once

#include "panes/FolderLister.h"
#include "widgets/ColumnListModel.h"

#include <QObject>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

class QTimer;

namespace kestrin {

class DirListItem;
class MarkedList;
class PaneHost;

// Which of a pane's rows are shown: those whose names hold the filter's text
// (letters of either case), or match it whole when it holds a `*` or `?`,
// and, unless dot-files are shown, whose names do not start with ".". ".."
// is always shown.
//
// The rows that are not shown leave the list and wait here, each with the
// index of the shown row it goes before, kept current as the list's rows
// come and go. So everything that walks the list (keys, marks, commands,
// the footer) sees only the shown rows; a hidden row keeps its mark and
// comes back with it.
//
// A change of the filter is worked out on later turns of the event loop, a
// slice of rows per turn, and the rows move in one step at the end: a key
// typed into the filter returns at once, whatever the number of rows, and a
// newer key starts the work again. One pass over the rows per change, and
// no allocation per row.
//
// GUI thread only, like the rows.
class RowFilter : public QObject
{
    Q_OBJECT

public:
    RowFilter(ColumnListModel &list, PaneHost &host, MarkedList &marked);
    ~RowFilter() override;

    // The text to filter by; empty shows every row (dot-files aside).
    void SetText(const std::string &text);
    const std::string &Text() const { return fText; }
    void SetShowDotFiles(bool show);
    bool ShowsDotFiles() const { return fShowDotFiles; }
    // Whether any row can be hidden.
    bool IsActive() const { return !fText.empty() || !fShowDotFiles; }
    // Whether a change has not been applied yet.
    bool IsPending() const { return fPending; }
    // Applies a pending change now.
    void Finish();

    bool Passes(const DirListItem &row) const;

    // The rows, shown or not, and the files among the hidden ones.
    int CountAll() const { return fList.CountItems() + int(fHidden.size()); }
    int CountHidden() const { return int(fHidden.size()); }
    const FileTotals &HiddenFiles() const { return fHiddenFiles; }
    // "3 of 120 shown" while there is a text (".." is not counted), else
    // empty.
    std::string Summary() const;

    // A new listing's rows: those shown go into the (empty) list, the others
    // are kept here, in place of the rows of the listing before.
    void AddListing(ColumnListModel::Rows rows);
    // Deletes the hidden rows (the list is about to be emptied); a change
    // not yet applied is dropped (the next listing is split by it).
    void Forget();
    // Empties the text without a pass (a new place is about to be listed).
    void ClearText();
    // The hidden rows among `rows`, which leave the place (in one pass
    // over the hidden rows, however many leave).
    ColumnListModel::Rows Take(const std::unordered_set<const CLVListItem *> &rows);
    // Rows that arrived and are not shown: each kept in its sorted place
    // (in one pass over the hidden rows, however many arrive).
    void Keep(ColumnListModel::Rows rows);

signals:
    // The shown rows changed.
    void Filtered();

private:
    struct Hidden
    {
        int before; // the index of the shown row it goes before
        std::unique_ptr<CLVListItem> row;
    };

    void Restart();
    void Step();
    // Numbers a slice of the rows after a change (see NumberSome); the
    // first turn selects the row that Apply chose.
    void NumberStep();
    void SelectAfter();
    void Apply();
    void RowsMoved(const RowShift &shift);
    void Resorted();
    // Whether `a` goes before `b` (folders first, then by the sort).
    bool Precedes(const DirListItem &a, const DirListItem &b) const;

    ColumnListModel &fList;
    PaneHost &fHost;
    MarkedList &fMarked;
    std::string fText;
    bool fShowDotFiles = true;
    // The filter's text in lower case, and whether it is a pattern.
    std::string fNeedle;
    bool fPattern = false;
    // A reused buffer for a name in lower case.
    mutable std::string fLowered;

    std::vector<Hidden> fHidden; // ascending by `before`
    FileTotals fHiddenFiles;

    // The pass in progress, the list's rows first, then the hidden ones:
    // each row's verdict (kPasses, kMarked), and what moving the rows needs
    // to know of those hidden now and later, so that the move itself reads
    // no row.
    std::vector<uint8_t> fVerdicts;
    std::vector<char> fHiddenBytes; // the hidden rows' SearchBytes
    FileTotals fNextHiddenFiles;
    size_t fDone = 0;
    bool fPending = false;
    bool fApplying = false;
    QTimer *fTimer;
    QTimer *fNumberTimer;
    int fSelectAfter = -1;
};

} // namespace kestrin
