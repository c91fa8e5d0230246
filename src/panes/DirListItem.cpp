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
        fSizeText = "--";
        fPermissionText = "--";
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
    , fSizeText(sizeText)
    , fDateText(dateText)
    , fPermissionText(permissionText)
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
        fPermissionText = "n/a";
        return;
    }
    const struct stat &info = entry.info;
    fNode = node_ref{info.st_dev, info.st_ino};
    fModificationTime = info.st_mtime;
    fDateText = EntryTexts::DateText(info.st_mtime, dateFormat);
    fPermissionText = EntryTexts::PermissionText(info.st_mode);
    fMode = info.st_mode;
    if (S_ISREG(info.st_mode)) {
        fIsFolder = false;
        fSize = info.st_size;
        fSizeText = SizeTextFor(fSize);
    } else if (S_ISDIR(info.st_mode)) {
        fSizeText = "[Directory]";
    } else if (S_ISLNK(info.st_mode)) {
        fIsLink = true;
        fSizeText = "[Link]";
        if (entry.targetKnown) {
            fMode = entry.targetMode;
            fIsFolder = !S_ISREG(entry.targetMode);
        }
    }
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
        return QString::fromStdString(fSizeText);
    case kColumnDate:
        return QString::fromStdString(fDateText);
    case kColumnPermissions:
        return QString::fromStdString(fPermissionText);
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
        return strcmp(a->PermissionText().c_str(), b->PermissionText().c_str());
    default:
        return 0;
    }
}

} // namespace kestrin
