#include "widgets/CLVListItem.h"

namespace kestrin {

struct CLVListItem::Outline
{
    CLVListItem *superitem = nullptr;
    Rows subitems;
    uint32_t level = 0;
};

CLVListItem::CLVListItem(uint32_t outlineLevel, bool superItem)
    : fSuperItem(superItem)
{
    if (outlineLevel != 0)
        SetOutlineLevel(outlineLevel);
}

// Sub-rows go with their row: fSubitems owns them.
CLVListItem::~CLVListItem() = default;

QString CLVListItem::ColumnText(int) const
{
    return QString();
}

uint32_t CLVListItem::OutlineLevel() const
{
    return fOutline ? fOutline->level : 0;
}

CLVListItem *CLVListItem::Superitem() const
{
    return fOutline ? fOutline->superitem : nullptr;
}

CLVListItem *CLVListItem::SubitemAt(int index) const
{
    const Rows &subitems = Subitems();
    if (index < 0 || size_t(index) >= subitems.size())
        return nullptr;
    return subitems[size_t(index)].get();
}

const CLVListItem::Rows &CLVListItem::Subitems() const
{
    static const Rows none;
    return fOutline ? fOutline->subitems : none;
}

CLVListItem::Rows &CLVListItem::OwnSubitems()
{
    return OwnOutline().subitems;
}

void CLVListItem::SetSuperitem(CLVListItem *superitem)
{
    if (superitem != nullptr || fOutline)
        OwnOutline().superitem = superitem;
}

void CLVListItem::SetOutlineLevel(uint32_t level)
{
    if (level != 0 || fOutline)
        OwnOutline().level = level;
}

CLVListItem::Outline &CLVListItem::OwnOutline()
{
    if (!fOutline)
        fOutline = std::make_unique<Outline>();
    return *fOutline;
}

} // namespace kestrin
