#include "panes/DirListItem.h"

#include "app/AppUtils.h"
#include "app/EntryTexts.h"
#include "panes/NameSort.h"
#include "panes/NumberSort.h"
#include "panes/PaneMessages.h"
#include "platform/Entry.h"
#include "platform/FolderScan.h"
#include "widgets/StableMergeSort.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <mutex>
#include <span>
#include <utility>
#include <strings.h>

namespace kestrin {

namespace {

platform::ScannedEntry Scan(const platform::Entry &entry, RowName naming)
{
    std::string path, leaf;
    entry.GetPath(&path);
    entry.GetName(&leaf);
    return platform::ScanEntry(path, naming == RowName::Path ? path : leaf);
}

} // namespace

struct DirListItem::Look
{
    RowColors colors;
    std::string dateFormat;
};

// Once every number is taken, the last one names the newest look, so rows
// made after that show today's colours; the looks themselves stay, so a
// row's number always names a whole one.
std::atomic<const DirListItem::Look *> &DirListItem::LookNumbered(uint8_t number)
{
    static std::array<std::atomic<const Look *>, 256> numbered{};
    return numbered[number];
}

uint8_t DirListItem::SharedLook(const RowColors &colors, const std::string &dateFormat)
{
    const auto same = [&](const Look *look) {
        return look != nullptr && look->dateFormat == dateFormat
               && look->colors.background == colors.background && look->colors.text == colors.text
               && look->colors.selectedText == colors.selectedText
               && look->colors.selectionBar == colors.selectionBar;
    };
    thread_local int last = -1;
    if (last >= 0 && same(LookNumbered(uint8_t(last)).load(std::memory_order_acquire)))
        return uint8_t(last);
    static std::mutex mutex;
    static std::deque<Look> looks; // a deque keeps the looks where they are
    const std::lock_guard<std::mutex> lock(mutex);
    const size_t numbers = std::min<size_t>(looks.size(), 256);
    for (size_t number = 0; number < numbers; number++) {
        if (same(LookNumbered(uint8_t(number)).load(std::memory_order_relaxed))) {
            last = int(number);
            return uint8_t(number);
        }
    }
    const auto number = uint8_t(std::min<size_t>(looks.size(), 255));
    LookNumbered(number).store(&looks.emplace_back(Look{colors, dateFormat}), std::memory_order_release);
    last = number;
    return number;
}

const DirListItem::Look &DirListItem::TheLook() const
{
    return *LookNumbered(fLook).load(std::memory_order_acquire);
}

DirListItem::DirListItem(const platform::ScannedEntry &entry,
                         const RowColors &colors,
                         bool isParent,
                         const std::string &dateFormat)
    : fIsParent(isParent)
    , fLook(SharedLook(colors, dateFormat))
{
    if (isParent) {
        fName = "..";
        GivenTexts &given = Given();
        given.size = given.permission = "--";
        given.hasSize = given.hasDate = given.hasPermission = true;
        return;
    }
    Fill(entry);
}

DirListItem::DirListItem(const platform::Entry &entry,
                         const RowColors &colors,
                         bool isParent,
                         RowName naming,
                         const std::string &dateFormat)
    : DirListItem(isParent ? platform::ScannedEntry() : Scan(entry, naming),
                  colors,
                  isParent,
                  dateFormat)
{
    fNamedByPath = naming == RowName::Path && !isParent;
}

DirListItem::DirListItem(const std::string &name,
                         const std::string &sizeText,
                         const std::string &dateText,
                         const std::string &permissionText,
                         const RowColors &colors)
    : fLook(SharedLook(colors, std::string()))
    , fName(name)
    , fGiven(new GivenTexts{sizeText, dateText, permissionText, true, true, true})
{
    fIsFolder = !permissionText.empty() && permissionText[0] == 'd';
    fIsLink = !permissionText.empty() && permissionText[0] == 'l';
    fSize = strtoll(sizeText.c_str(), nullptr, 10);
    if (fIsFolder)
        fMode = S_IFDIR;
}

DirListItem::DirListItem(const RowColors &colors)
    : fLook(SharedLook(colors, std::string()))
{}

void DirListItem::Fill(const platform::ScannedEntry &entry)
{
    fName = entry.name;
    if (entry.statStatus != B_OK) {
        GivenTexts &given = Given();
        given.permission = "n/a";
        given.hasPermission = true;
        return;
    }
    const struct stat &info = entry.info;
    fHasStat = true;
    fNode = node_ref{info.st_dev, info.st_ino};
    fModificationTime = info.st_mtime;
    fPermissions = uint16_t(info.st_mode & 0777);
    fMode = info.st_mode;
    fIsLink = S_ISLNK(info.st_mode);
    if (fIsLink && entry.targetKnown)
        fMode = entry.targetMode;
    if (S_ISREG(info.st_mode))
        fSize = info.st_size;
    // Only what can be listed is a folder: a pipe, a socket or a device is
    // counted with the files and handed to whoever opens files, who knows
    // what to make of it. A link that leads nowhere stays with the folders,
    // as it always has.
    fIsFolder = S_ISDIR(fMode) || (fIsLink && !entry.targetKnown);
}

const RowColors &DirListItem::Colors() const
{
    return TheLook().colors;
}

DirListItem::GivenTexts &DirListItem::Given()
{
    if (!fGiven)
        fGiven = std::make_unique<GivenTexts>();
    return *fGiven;
}

void DirListItem::SetSizeText(const std::string &text)
{
    GivenTexts &given = Given();
    given.size = text;
    given.hasSize = true;
}

std::string DirListItem::SizeText() const
{
    if (fGiven && fGiven->hasSize)
        return fGiven->size;
    if (!fHasStat)
        return {};
    if (fIsLink)
        return "[Link]";
    if (S_ISDIR(fMode))
        return "[Directory]";
    return S_ISREG(fMode) ? SizeTextFor(fSize) : std::string();
}

std::string DirListItem::DateText() const
{
    if (fGiven && fGiven->hasDate)
        return fGiven->date;
    return fHasStat ? EntryTexts::DateText(fModificationTime, TheLook().dateFormat) : std::string();
}

std::string DirListItem::PermissionText() const
{
    if (fGiven && fGiven->hasPermission)
        return fGiven->permission;
    return fHasStat ? EntryTexts::PermissionText(fPermissions) : std::string();
}

int DirListItem::ComparePermissions(const DirListItem &first, const DirListItem &second)
{
    // Made texts hold a letter where a bit is set and '-', which sorts
    // before every letter, where it is not: they order as the bits do.
    const bool given = (first.fGiven && first.fGiven->hasPermission)
                       || (second.fGiven && second.fGiven->hasPermission) || !first.fHasStat
                       || !second.fHasStat;
    if (!given)
        return int(first.fPermissions) - int(second.fPermissions);
    return strcmp(first.PermissionText().c_str(), second.PermissionText().c_str());
}

std::string DirListItem::SizeTextFor(int64_t size)
{
    // Printed as 32-bit numbers, as the list always has: a file of 5 TB
    // shows a wrapped count of K.
    if (size <= 1024)
        return std::to_string(int32_t(size)) + " Bytes";
    return std::to_string(int32_t(size / 1024)) + " K";
}

QString DirListItem::ColumnText(int column) const
{
    switch (column) {
    case kColumnName:
        return QString::fromUtf8(fName.data(), qsizetype(fName.size()));
    case kColumnSize:
        return QString::fromStdString(SizeText());
    case kColumnDate:
        return QString::fromStdString(DateText());
    case kColumnPermissions:
        return QString::fromStdString(PermissionText());
    default:
        return {};
    }
}

namespace {

// What the compare function asks of a row for one key, in 16 bytes: a
// million of them are merged twenty times over in a sort, so their size is
// most of its time.
struct RowKey
{
    union {
        int64_t number = 0; // the size or the modification time
        const char *name;
    };
    uint32_t row = 0; // where the row stood before sorting
    bool parent = false;
    bool folder = false;
};
static_assert(sizeof(RowKey) == 16);

RowKey KeyOf(const DirListItem &item, int32_t sortKey)
{
    RowKey key;
    key.parent = item.Name() == "..";
    key.folder = item.IsFolder();
    if (sortKey == kColumnName)
        key.name = item.Name().c_str();
    else if (sortKey == kColumnSize)
        key.number = item.Size();
    else if (sortKey == kColumnDate)
        key.number = item.ModificationTime();
    return key;
}

int CompareKeys(const RowKey &a, const RowKey &b, int32_t sortKey, bool caseSensitive)
{
    if (a.parent)
        return 0;
    if (a.folder && !b.folder)
        return 0;
    switch (sortKey) {
    case kColumnName:
        return caseSensitive ? strcmp(a.name, b.name) : strcasecmp(a.name, b.name);
    case kColumnSize:
        // The low 32 bits of each size, subtracted as 32-bit numbers: sizes
        // beyond 2 GB may sort out of order, as they always have.
        return int32_t(uint32_t(a.number) - uint32_t(b.number));
    case kColumnDate:
        return a.number < b.number ? -1 : (a.number > b.number ? 1 : 0);
    default:
        return 0;
    }
}

// Whether the rows come as a list always has them: ".." first where it is,
// then the folders, then the files.
bool ListedInGroups(const std::vector<RowKey> &keys)
{
    size_t i = !keys.empty() && keys[0].parent ? 1 : 0;
    while (i < keys.size() && keys[i].folder && !keys[i].parent)
        i++;
    while (i < keys.size() && !keys[i].folder && !keys[i].parent)
        i++;
    return i == keys.size();
}

// Where the folders start and where the files start in rows listed in
// groups.
std::pair<size_t, size_t> GroupStarts(const std::vector<RowKey> &keys)
{
    const size_t folders = !keys.empty() && keys[0].parent ? 1 : 0;
    const auto firstFile = std::find_if(keys.begin() + long(folders), keys.end(),
                                        [](const RowKey &key) { return !key.folder; });
    return {folders, size_t(firstFile - keys.begin())};
}

// The compare function answers "keep the left one" for ".." against any row
// and for a folder against a file, so rows listed in groups stay in their
// groups and each group is ordered by its key alone. Where that key is a
// strict order, NameSort and NumberSort can follow it without asking the
// compare function.
template<typename Sorter, typename Entry>
void SortEachGroup(std::vector<RowKey> &keys, std::vector<Entry> &entries, Sorter sort)
{
    const auto [folders, files] = GroupStarts(keys);
    std::span<Entry> all(entries);
    sort(all.subspan(folders, files - folders));
    sort(all.subspan(files));
    for (size_t i = 0; i < keys.size(); i++)
        keys[i].row = entries[i].row;
}

void SortGroupsByName(std::vector<RowKey> &keys, bool caseSensitive, bool descending)
{
    std::vector<NameSort::Entry> names(keys.size());
    for (size_t i = 0; i < keys.size(); i++)
        names[i] = {keys[i].name, keys[i].row};
    SortEachGroup(keys, names, [&](std::span<NameSort::Entry> group) {
        NameSort::Sort(group, caseSensitive, descending);
    });
}

void SortGroupsByNumber(std::vector<RowKey> &keys, bool descending)
{
    std::vector<NumberSort::Entry> numbers(keys.size());
    for (size_t i = 0; i < keys.size(); i++)
        numbers[i] = {keys[i].number, keys[i].row};
    SortEachGroup(keys, numbers,
                  [&](std::span<NumberSort::Entry> group) { NumberSort::Sort(group, descending); });
}

// The size comparison subtracts the low 32 bits of two sizes; while every
// size is below 2 GB that is the order of the numbers themselves.
bool SizesCompareAsNumbers(const std::vector<RowKey> &keys)
{
    return std::all_of(keys.begin(), keys.end(), [](const RowKey &key) {
        return key.parent || (key.number >= 0 && key.number <= INT32_MAX);
    });
}

} // namespace

int CompareFunc(const CLVListItem *first, const CLVListItem *second, int32_t sortKey)
{
    const auto *a = static_cast<const DirListItem *>(first);
    const auto *b = static_cast<const DirListItem *>(second);
    if (sortKey == kColumnPermissions) {
        if (a->Name() == ".." || (a->IsFolder() && !b->IsFolder()))
            return 0;
        return DirListItem::ComparePermissions(*a, *b);
    }
    return CompareKeys(KeyOf(*a, sortKey), KeyOf(*b, sortKey), sortKey, GetbCaseSensitiveSort());
}

void SortDirRows(std::vector<std::unique_ptr<CLVListItem>> &rows, int32_t sortKey, bool descending)
{
    if (sortKey != kColumnName && sortKey != kColumnSize && sortKey != kColumnDate) {
        StableMergeSort(rows, [sortKey, descending](const auto &left, const auto &right) {
            const int order = CompareFunc(left.get(), right.get(), sortKey);
            return descending ? order >= 0 : order <= 0;
        });
        return;
    }
    std::vector<RowKey> keys(rows.size());
    for (size_t i = 0; i < rows.size(); i++) {
        keys[i] = KeyOf(static_cast<const DirListItem &>(*rows[i]), sortKey);
        keys[i].row = uint32_t(i);
    }
    const bool caseSensitive = GetbCaseSensitiveSort();
    const bool grouped = ListedInGroups(keys);
    if (grouped && sortKey == kColumnName) {
        SortGroupsByName(keys, caseSensitive, descending);
    } else if (grouped && (sortKey == kColumnDate
                           || (sortKey == kColumnSize && SizesCompareAsNumbers(keys)))) {
        SortGroupsByNumber(keys, descending);
    } else {
        StableMergeSort(keys, [&](const RowKey &left, const RowKey &right) {
            const int order = CompareKeys(left, right, sortKey, caseSensitive);
            return descending ? order >= 0 : order <= 0;
        });
    }
    std::vector<std::unique_ptr<CLVListItem>> sorted(rows.size());
    for (size_t i = 0; i < keys.size(); i++)
        sorted[i] = std::move(rows[keys[i].row]);
    rows.swap(sorted);
}

} // namespace kestrin
