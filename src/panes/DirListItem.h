#pragma once

#include "app/PaneSettings.h"
#include "platform/EntryRef.h"
#include "widgets/CLVListItem.h"

#include <cstdint>
#include <ctime>
#include <string>
#include <sys/types.h>

class QFontMetrics;
class QIcon;

namespace platform {
class Entry;
struct ScannedEntry;
} // namespace platform

namespace kestrin {

// One row of a pane's list: the texts of its columns, made once from the
// entry's stat data, its icon, colours, and the marked and drag-over flags.
//
// Rows are made on the listing's worker thread and handed to the GUI thread
// whole; the icon is looked up on the GUI thread the first time the row is
// drawn, so only rows that are shown ever cost a look-up.
// What a local row's Name column shows: the entry's name in its folder, or
// its whole path (query results, whose entries come from anywhere).
enum class RowName { Leaf, Path };

class DirListItem : public CLVListItem
{
public:
    // A local entry (folder or query listing). `entry.name` is what the Name
    // column shows: the entry's name in a folder, its full path in query
    // results. The parent row ".." reads nothing from the file system.
    DirListItem(const platform::ScannedEntry &entry,
                const RowColors &colors,
                bool isParent,
                const std::string &dateFormat);
    // The same from an entry that is read here; the Name column shows its
    // leaf or its whole path.
    DirListItem(const platform::Entry &entry,
                const RowColors &colors,
                bool isParent,
                RowName naming,
                const std::string &dateFormat);
    // A row whose texts are given: FTP and archive listings. The folder flag
    // comes from the permission text ("d..."); the size from the size text.
    DirListItem(const std::string &name,
                const std::string &sizeText,
                const std::string &dateText,
                const std::string &permissionText,
                const RowColors &colors);
    // An empty row.
    explicit DirListItem(const RowColors &colors);

    const std::string &Name() const { return fName; }
    const std::string &SizeText() const { return fSizeText; }
    const std::string &DateText() const { return fDateText; }
    const std::string &PermissionText() const { return fPermissionText; }
    bool IsFolder() const { return fIsFolder; }
    bool IsParent() const { return fIsParent; }
    bool IsLink() const { return fIsLink; }
    int64_t Size() const { return fSize; }
    time_t ModificationTime() const { return fModificationTime; }
    void SetModificationTime(time_t time) { fModificationTime = time; }
    // The entry's own node (0 for rows that are not local entries).
    const node_ref &Node() const { return fNode; }

    bool IsMarked() const { return fMarked; }
    void SetMarked(bool marked) { fMarked = marked; }
    bool GetOver() const { return fOver; }
    void SetOver(bool over) { fOver = over; }

    const RowColors &Colors() const { return fColors; }
    void SetColors(const RowColors &colors) { fColors = colors; }
    void SetBackground(const rgb_color &background) { fColors.background = background; }
    // Shows a text of its own in the Size column (a folder's occupied space).
    void SetSizeText(const std::string &text) { fSizeText = text; }

    // The text of the Size column for a file of `size` bytes.
    static std::string SizeTextFor(int64_t size);

    void DrawItemColumn(
        QPainter &painter, const QRect &rect, int column, bool selected, bool complete) override;
    QString ColumnText(int column) const override;
    // Whether a column's text shows whole in a cell `width` pixels wide.
    bool TextFits(int column, int width, const QFontMetrics &metrics) const;

private:
    void Fill(const platform::ScannedEntry &entry, const std::string &dateFormat);
    const QIcon *Icon() const;

    std::string fName;
    std::string fSizeText;
    std::string fDateText;
    std::string fPermissionText;
    RowColors fColors;
    int64_t fSize = 0;
    time_t fModificationTime = 0;
    node_ref fNode;
    mode_t fMode = 0; // the entry's own; the target's for a link that leads somewhere
    bool fIsFolder = true;
    bool fIsParent = false;
    bool fIsLink = false;
    bool fMarked = false;
    bool fOver = false;
    mutable const QIcon *fIcon = nullptr; // GUI thread; from the shared icon cache
};

// The order of two rows by a column (1 name, 2 size, 3 date, 4 permissions).
// Deliberately not symmetric: a parent row on the left, and a folder on the
// left of a file, compare as equal, so the stable sort leaves ".." on top and
// folders before files, the order in which a listing adds them.
int CompareFunc(const CLVListItem *first, const CLVListItem *second, int32_t sortKey);

} // namespace kestrin
