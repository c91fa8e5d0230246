#include "fileops/AttributeView.h"

#include "fileops/AttVListItem.h"

namespace kestrin {

namespace {

constexpr rgb_color kRowColor{0, 0, 0, 255};

} // namespace

AttributeView::AttributeView(QWidget *parent)
    : ColumnListView(parent, false)
{
    AddColumn("Attribute", 110, 40, 0);
    AddColumn("Value", 160, 40, 0);
}

void AttributeView::SetRows(const std::vector<AttributeText::Row> &rows)
{
    MakeEmpty();
    std::vector<std::unique_ptr<CLVListItem>> items;
    for (const AttributeText::Row &row : rows)
        items.push_back(std::make_unique<AttVListItem>(row.name, row.value, kRowColor));
    AddList(std::move(items));
    // The keys move from a row the user can see.
    if (CountItems() > 0)
        Select(0);
}

} // namespace kestrin
