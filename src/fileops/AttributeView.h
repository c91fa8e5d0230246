#pragma once

#include "fileops/AttributeText.h"
#include "widgets/ColumnListView.h"

#include <vector>

namespace kestrin {

// The attributes of an entry in the information window: a column list of
// "Attribute" and "Value", one AttVListItem per attribute.
class AttributeView : public ColumnListView
{
    Q_OBJECT

public:
    explicit AttributeView(QWidget *parent = nullptr);

    void SetRows(const std::vector<AttributeText::Row> &rows);
};

} // namespace kestrin
