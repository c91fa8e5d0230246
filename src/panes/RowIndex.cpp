#include "panes/RowIndex.h"

#include "panes/DirListItem.h"

#include <functional>
#include <utility>

namespace kestrin {

namespace {

constexpr size_t kFirstSize = 16;

uint32_t HashOf(std::string_view name)
{
    return uint32_t(std::hash<std::string_view>()(name));
}

} // namespace

void RowIndex::Reserve(size_t rows)
{
    if (rows * 4 > fSlots.size() * 3)
        Grow(rows);
}

void RowIndex::Clear()
{
    fSlots = {};
    fHashes = {};
    fCount = 0;
}

size_t RowIndex::Slot(std::string_view name, uint32_t hash) const
{
    const size_t mask = fSlots.size() - 1;
    size_t slot = hash & mask;
    while (fSlots[slot] != nullptr && (fHashes[slot] != hash || fSlots[slot]->Name() != name))
        slot = (slot + 1) & mask;
    return slot;
}

DirListItem *RowIndex::Find(std::string_view name) const
{
    return fSlots.empty() ? nullptr : fSlots[Slot(name, HashOf(name))];
}

void RowIndex::Insert(DirListItem *row)
{
    if ((fCount + 1) * 4 > fSlots.size() * 3)
        Grow(fCount + 1);
    const uint32_t hash = HashOf(row->Name());
    const size_t slot = Slot(row->Name(), hash);
    if (fSlots[slot] == nullptr)
        fCount++;
    fSlots[slot] = row;
    fHashes[slot] = hash;
}

void RowIndex::Erase(std::string_view name)
{
    if (fSlots.empty())
        return;
    const size_t mask = fSlots.size() - 1;
    size_t hole = Slot(name, HashOf(name));
    if (fSlots[hole] == nullptr)
        return;
    fSlots[hole] = nullptr;
    fCount--;
    // Linear probing without tombstones: the rows after the hole that would
    // no longer be found past it move up into it.
    for (size_t next = (hole + 1) & mask; fSlots[next] != nullptr; next = (next + 1) & mask) {
        const size_t home = fHashes[next] & mask;
        const bool between = hole <= next ? (home > hole && home <= next)
                                          : (home > hole || home <= next);
        if (!between) {
            fSlots[hole] = std::exchange(fSlots[next], nullptr);
            fHashes[hole] = fHashes[next];
            hole = next;
        }
    }
}

void RowIndex::Grow(size_t rows)
{
    size_t size = kFirstSize;
    while (size < rows * 2)
        size *= 2;
    std::vector<DirListItem *> oldSlots = std::exchange(fSlots, std::vector<DirListItem *>(size));
    std::vector<uint32_t> oldHashes = std::exchange(fHashes, std::vector<uint32_t>(size));
    const size_t mask = size - 1;
    for (size_t i = 0; i < oldSlots.size(); i++) {
        if (oldSlots[i] == nullptr)
            continue;
        size_t slot = oldHashes[i] & mask;
        while (fSlots[slot] != nullptr)
            slot = (slot + 1) & mask;
        fSlots[slot] = oldSlots[i];
        fHashes[slot] = oldHashes[i];
    }
}

} // namespace kestrin
