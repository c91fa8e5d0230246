#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kestrin {

class DirListItem;

// The rows of a listed folder by name, for the changes node monitoring
// reports. The names are the rows' own: the index holds a pointer and the
// name's hash per slot, in an open-addressed table at most three quarters
// full, so a million rows cost about 24 bytes each here rather than a copy of
// every name in a node of its own. The hashes spare a look at the rows
// themselves when probing and when the table grows, which a million rows
// scattered in memory would make slow. The rows belong to the list; the
// index never owns them.
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
    size_t Slot(std::string_view name, uint32_t hash) const;
    void Grow(size_t rows);

    std::vector<DirListItem *> fSlots;
    std::vector<uint32_t> fHashes;
    size_t fCount = 0;
};

} // namespace kestrin
