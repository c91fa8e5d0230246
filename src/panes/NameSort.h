#pragma once

#include <cstdint>
#include <span>

namespace kestrin {

// Sorts names in the order strcmp (or strcasecmp) gives them, stably, eight
// bytes at a time: the rows are ordered by a number made of the names' first
// eight bytes, then each run of rows whose names share those bytes by the
// next eight, and so on. Most rows are placed by a comparison of two numbers
// held side by side instead of a call that follows two pointers into rows
// scattered over the heap, which is what made sorting a million names cost
// most of a second.
class NameSort
{
public:
    struct Entry
    {
        const char *name = nullptr;
        uint32_t row = 0;
    };

    static void Sort(std::span<Entry> entries, bool caseSensitive, bool descending);

private:
    struct Chunked
    {
        uint64_t chunk = 0;
        Entry entry;
    };

    NameSort(bool caseSensitive, bool descending);

    // Sorts [first, last), whose names all agree in their first `offset`
    // bytes and are at least that long.
    void SortFrom(Chunked *first, Chunked *last, size_t offset) const;
    uint64_t ChunkAt(const char *name, size_t offset) const;

    bool fCaseSensitive;
    bool fDescending;
};

} // namespace kestrin
