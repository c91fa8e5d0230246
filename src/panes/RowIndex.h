#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace kestrin {

class DirListItem;

// The rows of a listed folder by name, for the changes node monitoring
// reports. The names are the rows' own: the index holds only pointers, in an
// open-addressed table at most half full, so a million rows cost 16 bytes
// each here rather than a copy of every name in a node of its own. The rows
// belong to the list; the index never owns them.
class RowIndex
{
public:
    void Reserve(size_t rows);
    void Clear();
    size_t Size() const { return fCount; }

    DirListItem *Find(std::string_view name) const;
    // Takes the place of a row of the same name.
    void Insert(DirListItem *row);
    void Erase(std::string_view name);

private:
    // Where `name` is, or the empty slot where it would go.
    size_t Slot(std::string_view name) const;
    void Grow(size_t rows);

    std::vector<DirListItem *> fSlots;
    size_t fCount = 0;
};

} // namespace kestrin
