#pragma once

#include "app/PaneSettings.h"
#include "widgets/CLVPaintedItem.h"

#include <string>

namespace kestrin {

// One folder of the tree, or the "<populating...>" placeholder that stands
// under a branch until its folder has been read.
//
// Made on the GUI thread; GUI thread only.
class KsTreeListItem : public CLVPaintedItem
{
public:
    // A folder row; `expandable` when the folder has sub-folders.
    KsTreeListItem(uint32_t level,
                   const std::string &name,
                   const std::string &path,
                   bool expandable,
                   const RowColors &colors);
    // The placeholder.
    KsTreeListItem(uint32_t level, const RowColors &colors);

    static constexpr const char *kPlaceholder = "<populating...>";

    const std::string &Name() const { return fName; }
    const std::string &Path() const { return fPath; }
    bool IsPlaceholder() const { return fPlaceholder; }
    bool IsPopulated() const { return fPopulated; }
    void SetPopulated(bool populated) { fPopulated = populated; }
    bool GetOver() const { return fOver; }
    void SetOver(bool over) { fOver = over; }
    void SetColors(const RowColors &colors) { fColors = colors; }

    void DrawItemColumn(
        QPainter &painter, const QRect &rect, int column, bool selected, bool complete) override;
    QString ColumnText(int column) const override;

private:
    std::string fName;
    std::string fPath;
    RowColors fColors;
    bool fPlaceholder = false;
    bool fPopulated = false;
    bool fOver = false;
};

} // namespace kestrin
