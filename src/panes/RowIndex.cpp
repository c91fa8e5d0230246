#include "panes/RowIndex.h"

#include "panes/DirListItem.h"

#include <functional>
#include <utility>

namespace kestrin {

namespace {

constexpr size_t kFirstSize = 16;

std::string_view NameOf(const DirListItem *row)
{
    return row->Name();
}

} // namespace

void RowIndex::Reserve(size_t rows)
{
    if (rows * 2 > fSlots.size())
        Grow(rows);
}

void RowIndex::Clear()
{
    fSlots = {};
    fCount = 0;
}

size_t RowIndex::Slot(std::string_view name) const
{
    const size_t mask = fSlots.size() - 1;
    size_t slot = std::hash<std::string_view>()(name) & mask;
    while (fSlots[slot] != nullptr && NameOf(fSlots[slot]) != name)
        slot = (slot + 1) & mask;
    return slot;
}

DirListItem *RowIndex::Find(std::string_view name) const
{
    return fSlots.empty() ? nullptr : fSlots[Slot(name)];
}

void RowIndex::Insert(DirListItem *row)
{
    if ((fCount + 1) * 2 > fSlots.size())
        Grow(fCount + 1);
    DirListItem *&slot = fSlots[Slot(NameOf(row))];
    if (slot == nullptr)
        fCount++;
    slot = row;
}

void RowIndex::Erase(std::string_view name)
{
    if (fSlots.empty())
        return;
    const size_t mask = fSlots.size() - 1;
    size_t hole = Slot(name);
    if (fSlots[hole] == nullptr)
        return;
    fSlots[hole] = nullptr;
    fCount--;
    // Linear probing without tombstones: the rows after the hole that would
    // no longer be found past it move up into it.
    for (size_t next = (hole + 1) & mask; fSlots[next] != nullptr; next = (next + 1) & mask) {
        const size_t home = std::hash<std::string_view>()(NameOf(fSlots[next])) & mask;
        const bool between = hole <= next ? (home > hole && home <= next)
                                          : (home > hole || home <= next);
        if (!between) {
            fSlots[hole] = fSlots[next];
            fSlots[next] = nullptr;
            hole = next;
        }
    }
}

void RowIndex::Grow(size_t rows)
{
    size_t size = kFirstSize;
    while (size < rows * 2)
        size *= 2;
    std::vector<DirListItem *> old = std::exchange(fSlots, std::vector<DirListItem *>(size));
    for (DirListItem *row : old) {
        if (row != nullptr)
            fSlots[Slot(NameOf(row))] = row;
    }
}

} // namespace kestrin
