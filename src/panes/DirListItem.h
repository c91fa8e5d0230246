#pragma once

#include "app/PaneSettings.h"
#include "platform/EntryRef.h"
#include "widgets/CLVListItem.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform {
class Entry;
struct ScannedEntry;
} // namespace platform

namespace kestrin {

// One row of a pane's list: the entry's name and stat data, from which the
// other columns' texts are made when asked for (a folder of a million rows
// keeps no million date texts), the colours it is drawn in, and the marked
// and drag-over flags. Rows whose texts come from elsewhere (FTP and archive
// listings, a folder's occupied space) carry those texts. The list paints
// rows (DirRowPainter); a row is data.
//
// Rows are made on the listing's worker thread and handed to the GUI thread
// whole.
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
    std::string SizeText() const;
    std::string DateText() const;
    std::string PermissionText() const;
    // A folder, or a link that leads to one or nowhere; anything else
    // (files, pipes, sockets, devices) counts as a file.
    bool IsFolder() const { return fIsFolder; }
    bool IsParent() const { return fIsParent; }
    bool IsLink() const { return fIsLink; }
    // The Name column shows the entry's whole path (query results).
    bool NamedByPath() const { return fNamedByPath; }
    // The entry's mode; the target's for a link that leads somewhere.
    mode_t Mode() const { return fMode; }
    int64_t Size() const { return fSize; }
    time_t ModificationTime() const { return fModificationTime; }
    void SetModificationTime(time_t time) { fModificationTime = time; }
    // The entry's own node (0 for rows that are not local entries).
    const node_ref &Node() const { return fNode; }

    bool IsMarked() const { return fMarked; }
    void SetMarked(bool marked) { fMarked = marked; }
    bool GetOver() const { return fOver; }
    void SetOver(bool over) { fOver = over; }
    const RowColors &Colors() const;

    // Shows a text of its own in the Size column (a folder's occupied space).
    void SetSizeText(const std::string &text);

    // The text of the Size column for a file of `size` bytes.
    static std::string SizeTextFor(int64_t size);

    QString ColumnText(int column) const override;
    // Type-ahead goes by the name's first letter.
    char SearchByte() const override { return fName.empty() ? 0 : fName[0]; }
    // The order of the two rows' permission texts, as strcmp gives it.
    static int ComparePermissions(const DirListItem &first, const DirListItem &second);

private:
    // Texts a row was given rather than made from its stat data.
    struct GivenTexts
    {
        std::string size, date, permission;
        bool hasSize = false, hasDate = false, hasPermission = false;
    };

    struct Look;

    void Fill(const platform::ScannedEntry &entry);
    GivenTexts &Given();
    // The number of the look shared by every row made with the same colours
    // and date format: rows are made on workers by the million, and looks
    // are few, so a byte names one.
    static uint8_t SharedLook(const RowColors &colors, const std::string &dateFormat);
    static std::atomic<const Look *> &LookNumbered(uint8_t number);
    const Look &TheLook() const;

    // A million rows are a million of these, so the members are packed: the
    // small ones first, where they fill the base's last bytes.
    uint16_t fPermissions = 0; // the entry's own permission bits
    mode_t fMode = 0;          // the entry's own; the target's for a link that leads somewhere
    bool fHasStat : 1 = false; // the texts are made from the stat data
    bool fIsFolder : 1 = true;
    bool fIsParent : 1 = false;
    bool fIsLink : 1 = false;
    bool fMarked : 1 = false;
    bool fOver : 1 = false;
    bool fNamedByPath : 1 = false; // the Name column shows the whole path
    // In the bytes the members above leave before the name: a row of 104
    // bytes takes a heap block of 112, one of 112 bytes a block of 128.
    uint8_t fLook = 0;
    std::string fName;
    std::unique_ptr<GivenTexts> fGiven;
    int64_t fSize = 0;
    time_t fModificationTime = 0;
    node_ref fNode;
};

// The order of two rows by a column (1 name, 2 size, 3 date, 4 permissions).
// Deliberately not symmetric: a parent row on the left, and a folder on the
// left of a file, compare as equal, so the stable sort leaves ".." on top and
// folders before files, the order in which a listing adds them.
int CompareFunc(const CLVListItem *first, const CLVListItem *second, int32_t sortKey);

// Puts rows in the order CompareFunc and the list's stable merge sort give
// them, sorting a compact key per row rather than a million rows scattered in
// memory.
void SortDirRows(std::vector<std::unique_ptr<CLVListItem>> &rows, int32_t sortKey, bool descending);

} // namespace kestrin
