#include "panes/NameSort.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace kestrin {

NameSort::NameSort(bool caseSensitive, bool descending)
    : fCaseSensitive(caseSensitive)
    , fDescending(descending)
{
}

void NameSort::Sort(std::span<Entry> entries, bool caseSensitive, bool descending)
{
    if (entries.size() < 2)
        return;
    std::vector<Chunked> chunked(entries.size());
    for (size_t i = 0; i < entries.size(); i++)
        chunked[i].entry = entries[i];
    NameSort(caseSensitive, descending).SortFrom(chunked.data(), chunked.data() + chunked.size(), 0);
    for (size_t i = 0; i < entries.size(); i++)
        entries[i] = chunked[i].entry;
}

uint64_t NameSort::ChunkAt(const char *name, size_t offset) const
{
    // Big-endian, so that numbers compare as the bytes do, unsigned, as
    // strcmp compares them; the bytes after the name's end stay 0, which
    // places a name before the longer ones it begins. strcasecmp folds each
    // byte with the locale's tolower, and so does this.
    uint64_t chunk = 0;
    const char *from = name + offset;
    size_t i = 0;
    for (; i < 8 && from[i] != '\0'; i++) {
        const auto byte = static_cast<unsigned char>(from[i]);
        const auto folded = fCaseSensitive ? byte : static_cast<unsigned char>(std::tolower(byte));
        chunk = (chunk << 8) | folded;
    }
    if (i == 0)
        return 0;
    return i == 8 ? chunk : chunk << (8 * (8 - i));
}

void NameSort::SortFrom(Chunked *first, Chunked *last, size_t offset) const
{
    for (Chunked *item = first; item != last; ++item)
        item->chunk = ChunkAt(item->entry.name, offset);
    if (fDescending)
        std::stable_sort(first, last, [](const Chunked &a, const Chunked &b) { return a.chunk > b.chunk; });
    else
        std::stable_sort(first, last, [](const Chunked &a, const Chunked &b) { return a.chunk < b.chunk; });
    while (first != last) {
        Chunked *runEnd = first + 1;
        while (runEnd != last && runEnd->chunk == first->chunk)
            ++runEnd;
        // A chunk whose last byte is 0 holds the end of its names: those are
        // equal, and stay in the order they came.
        if (runEnd - first > 1 && (first->chunk & 0xff) != 0)
            SortFrom(first, runEnd, offset + 8);
        first = runEnd;
    }
}

} // namespace kestrin
