#include "widgets/CLVListItem.h"

namespace kestrin {

CLVListItem::CLVListItem(uint32_t outlineLevel, bool superItem)
    : fOutlineLevel(outlineLevel)
    , fSuperItem(superItem)
{}

// Sub-rows go with their row: fSubitems owns them.
CLVListItem::~CLVListItem() = default;

QString CLVListItem::ColumnText(int) const
{
    return QString();
}

CLVListItem *CLVListItem::SubitemAt(int index) const
{
    if (index < 0 || size_t(index) >= fSubitems.size())
        return nullptr;
    return fSubitems[size_t(index)].get();
}

} // namespace kestrin
