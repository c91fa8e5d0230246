#include "panes/DirListItem.h"

#include "app/AppUtils.h"
#include "app/EntryTexts.h"
#include "panes/FileIcons.h"
#include "panes/PaneMessages.h"
#include "platform/Entry.h"
#include "platform/FolderScan.h"
#include "widgets/RgbColor.h"

#include <QFontMetrics>
#include <QIcon>
#include <QPainter>
#include <cstring>
#include <mutex>
#include <set>
#include <strings.h>

namespace kestrin {

namespace {

constexpr int kIconSize = 16;
constexpr int kIconInset = 2;
constexpr int kTextInset = 2;

platform::ScannedEntry Scan(const platform::Entry &entry, RowName naming)
{
    std::string path, leaf;
    entry.GetPath(&path);
    entry.GetName(&leaf);
    return platform::ScanEntry(path, naming == RowName::Path ? path : leaf);
}

// The date format a row is made with, shared by every row made with the same
// one: rows are made on workers by the million, and formats are few.
const std::string *SharedFormat(const std::string &format)
{
    thread_local const std::string *last = nullptr;
    if (last != nullptr && *last == format)
        return last;
    static std::mutex mutex;
    static std::set<std::string> formats;
    const std::lock_guard<std::mutex> lock(mutex);
    last = &*formats.insert(format).first;
    return last;
}

} // namespace

DirListItem::DirListItem(const platform::ScannedEntry &entry,
                         const RowColors &colors,
                         bool isParent,
                         const std::string &dateFormat)
    : fColors(colors)
    , fIsParent(isParent)
{
    if (isParent) {
        fName = "..";
        GivenTexts &given = Given();
        given.size = given.permission = "--";
        given.hasSize = given.hasDate = given.hasPermission = true;
        return;
    }
    Fill(entry, dateFormat);
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
{}

DirListItem::DirListItem(const std::string &name,
                         const std::string &sizeText,
                         const std::string &dateText,
                         const std::string &permissionText,
                         const RowColors &colors)
    : fName(name)
    , fGiven(new GivenTexts{sizeText, dateText, permissionText, true, true, true})
    , fColors(colors)
{
    fIsFolder = !permissionText.empty() && permissionText[0] == 'd';
    fIsLink = !permissionText.empty() && permissionText[0] == 'l';
    fSize = strtoll(sizeText.c_str(), nullptr, 10);
    if (fIsFolder)
        fMode = S_IFDIR;
}

DirListItem::DirListItem(const RowColors &colors)
    : fColors(colors)
{}

void DirListItem::Fill(const platform::ScannedEntry &entry, const std::string &dateFormat)
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
    fDateFormat = SharedFormat(dateFormat);
    fNode = node_ref{info.st_dev, info.st_ino};
    fModificationTime = info.st_mtime;
    fPermissions = uint16_t(info.st_mode & 0777);
    fMode = info.st_mode;
    if (S_ISREG(info.st_mode)) {
        fIsFolder = false;
        fSize = info.st_size;
    } else if (S_ISLNK(info.st_mode)) {
        fIsLink = true;
        if (entry.targetKnown) {
            fMode = entry.targetMode;
            fIsFolder = !S_ISREG(entry.targetMode);
        }
    }
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
    return fHasStat ? EntryTexts::DateText(fModificationTime, *fDateFormat) : std::string();
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

const QIcon *DirListItem::Icon() const
{
    if (fIcon == nullptr && !fIsParent)
        fIcon = &FileIcons::ForEntry(fName, fMode, fIsLink);
    return fIcon;
}

void DirListItem::DrawItemColumn(
    QPainter &painter, const QRect &rect, int column, bool selected, bool)
{
    painter.save();
    painter.fillRect(rect, ToQColor(selected ? fColors.selectionBar : fColors.background));
    painter.setClipRect(rect);
    if (column == kColumnIcon) {
        if (const QIcon *icon = Icon()) {
            // Tall rows keep the icon in the middle: moved down by half the
            // excess over 20, rounded up.
            const int excess = rect.height() - 20;
            const int down = excess > 0 ? (excess + 1) / 2 : 0;
            const QRect iconRect(rect.left() + kIconInset,
                                 rect.top() + kIconInset + down,
                                 kIconSize,
                                 kIconSize);
            icon->paint(&painter, iconRect);
        }
    } else {
        const QString text = ColumnText(column);
        if (!text.isEmpty()) {
            painter.setPen(ToQColor(fMarked || fOver ? fColors.selectedText : fColors.text));
            const QFontMetrics metrics(painter.font());
            const int baseline = rect.top()
                                 + (rect.height() + metrics.ascent() - metrics.descent()) / 2;
            painter.drawText(rect.left() + kTextInset, baseline, text);
        }
    }
    painter.restore();
}

bool DirListItem::TextFits(int column, int width, const QFontMetrics &metrics) const
{
    return kTextInset + metrics.horizontalAdvance(ColumnText(column)) <= width;
}

int CompareFunc(const CLVListItem *first, const CLVListItem *second, int32_t sortKey)
{
    const auto *a = static_cast<const DirListItem *>(first);
    const auto *b = static_cast<const DirListItem *>(second);
    if (a->Name() == "..")
        return 0;
    if (a->IsFolder() && !b->IsFolder())
        return 0;
    switch (sortKey) {
    case kColumnName:
        return GetbCaseSensitiveSort() ? strcmp(a->Name().c_str(), b->Name().c_str())
                                       : strcasecmp(a->Name().c_str(), b->Name().c_str());
    case kColumnSize:
        // The low 32 bits of each size, subtracted as 32-bit numbers: sizes
        // beyond 2 GB may sort out of order, as they always have.
        return int32_t(uint32_t(a->Size()) - uint32_t(b->Size()));
    case kColumnDate: {
        const time_t difference = a->ModificationTime() - b->ModificationTime();
        return difference < 0 ? -1 : (difference > 0 ? 1 : 0);
    }
    case kColumnPermissions:
        return DirListItem::ComparePermissions(*a, *b);
    default:
        return 0;
    }
}

} // namespace kestrin
